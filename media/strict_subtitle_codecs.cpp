#include "media/strict_subtitle_codecs.h"

#include <algorithm>
#include <iterator>

namespace media {

namespace {

// Plain text has no codec of its own any more: its samples are converted.
bool RefineText(const CodecRow& /*row*/, const FormatBlock& /*block*/, CodecDescription& description) {
    description.codecId = "S_TEXT/UTF8";
    return true;
}

// Codecs without private data.
bool DropPrivate(const CodecRow& /*row*/, const FormatBlock& /*block*/, CodecDescription& description) {
    description.codecPrivate.reset();
    return true;
}

// A text, without the zero that ends it in memory.
bool RefineScript(const CodecRow& /*row*/, const FormatBlock& /*block*/, CodecDescription& description) {
    while (description.codecPrivate && !description.codecPrivate->empty() && description.codecPrivate->back() == 0) {
        description.codecPrivate->pop_back();
    }
    return true;
}

// The signature, when the stream brings no header at all.
bool RefineWebVtt(const CodecRow& row, const FormatBlock& block, CodecDescription& description) {
    constexpr std::string_view kSignature = "WEBVTT";
    (void)RefineScript(row, block, description);
    description.maxBlockAdditionId = 1; // settings, identifier and comments
    if (!description.codecPrivate || description.codecPrivate->empty()) {
        description.codecPrivate.emplace(kSignature.begin(), kSignature.end());
    }
    return true;
}

// Which pages of the stream are meant: two numbers, and possibly the kind, of one language or of several.
bool RefineDvb(const CodecRow& /*row*/, const FormatBlock& /*block*/, CodecDescription& description) {
    constexpr size_t kPagesBytes = 4;
    constexpr size_t kPagesAndKindBytes = 5;
    const size_t bytes = description.codecPrivate ? description.codecPrivate->size() : 0;
    return bytes == kPagesBytes || (bytes > 0 && bytes % kPagesAndKindBytes == 0);
}

constexpr StrictCodec kSubtitleCodecs[] = {
    {"S_TEXT/ASCII", RefineText}, {"S_TEXT/UTF8", DropPrivate},    {"S_TEXT/SSA", RefineScript},
    {"S_TEXT/ASS", RefineScript}, {"S_TEXT/USF", RefineScript},    {"S_VOBSUB", RefineScript},
    {"S_HDMV/PGS", DropPrivate},  {"S_TEXT/WEBVTT", RefineWebVtt}, {"S_DVBSUB", RefineDvb},
};

} // namespace

const StrictCodec* FindStrictSubtitleCodec(std::string_view codecId) {
    const auto found = std::ranges::find(kSubtitleCodecs, codecId, &StrictCodec::codecId);
    return found == std::end(kSubtitleCodecs) ? nullptr : found;
}

} // namespace media
