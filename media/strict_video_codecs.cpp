#include "media/strict_video_codecs.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

#include "codecs/av1_configuration.h"
#include "codecs/vorbis_headers.h"
#include "codecs/whole_avc_configuration.h"
#include "codecs/whole_hevc_configuration.h"
#include "media/format_builder.h"
#include "media/uncompressed_pictures.h"

namespace media {

namespace {

using OptionalBytes = std::optional<std::vector<BYTE>>;

// ---- H.264 and H.265 ---------------------------------------------------------------------------------------------

// Samples with start codes get lengths of four bytes; others keep theirs, which dwFlags tells.
codecs::SequenceFacts FactsOf(const CodecRow& row, const FormatBlock& block) {
    codecs::SequenceFacts facts;
    facts.profile = static_cast<BYTE>(block.Read<DWORD>(offsetof(MPEG2VIDEOINFO, dwProfile)).value_or(0));
    facts.level = static_cast<BYTE>(block.Read<DWORD>(offsetof(MPEG2VIDEOINFO, dwLevel)).value_or(0));
    if (!row.layout->hasStartCodes) {
        facts.lengthBytes = block.Read<DWORD>(offsetof(MPEG2VIDEOINFO, dwFlags)).value_or(0);
    }
    return facts;
}

template <OptionalBytes (*Build)(codecs::ByteView, const codecs::SequenceFacts&)>
bool RefineRecord(const CodecRow& row, const FormatBlock& block, CodecDescription& description) {
    description.codecPrivate = Build(*description.codecPrivate, FactsOf(row, block));
    return description.codecPrivate.has_value();
}

// ---- Theora ------------------------------------------------------------------------------------------------------

constexpr char kTheoraHead[] = "\x80theora";
constexpr size_t kTheoraHeadBytes = sizeof(kTheoraHead) - 1;
constexpr size_t kHeaderLengthBytes = 2;

bool BeginsTheora(ByteView header) {
    return header.size() >= kTheoraHeadBytes && std::memcmp(header.data(), kTheoraHead, kTheoraHeadBytes) == 0;
}

// Some splitters put a length in front of each header.
std::optional<codecs::VorbisHeaders> TakeHeadersByLength(ByteView bytes) {
    codecs::VorbisHeaders headers;
    for (ByteView& header : headers) {
        if (bytes.size() < kHeaderLengthBytes) {
            return std::nullopt;
        }
        const size_t length = static_cast<size_t>(bytes[0]) << 8 | bytes[1];
        bytes = bytes.subspan(kHeaderLengthBytes);
        if (length > bytes.size()) {
            return std::nullopt;
        }
        header = bytes.first(length);
        bytes = bytes.subspan(length);
    }
    return bytes.empty() && BeginsTheora(headers[0]) ? std::optional(headers) : std::nullopt;
}

// As with Vorbis, three headers in Xiph lacing; what is neither is left to the reader.
bool RefineTheora(const CodecRow& /*row*/, const FormatBlock& /*block*/, CodecDescription& description) {
    if (const auto headers = TakeHeadersByLength(*description.codecPrivate)) {
        description.codecPrivate = codecs::LaceVorbisHeaders(*headers);
    }
    return true;
}

// ---- VP9 ---------------------------------------------------------------------------------------------------------

constexpr BYTE kFirstFeature = 1; // profile, level, bit depth, chroma subsampling
constexpr BYTE kLastFeature = 4;
constexpr size_t kFeatureBytes = 3; // identifier, length 1, value

bool AreVp9Features(ByteView bytes) {
    for (; bytes.size() >= kFeatureBytes; bytes = bytes.subspan(kFeatureBytes)) {
        if (bytes[0] < kFirstFeature || bytes[0] > kLastFeature || bytes[1] != 1) {
            return false;
        }
    }
    return bytes.empty();
}

// What follows the structure may be anything; decoders need none of it.
bool RefineVp9(const CodecRow& /*row*/, const FormatBlock& /*block*/, CodecDescription& description) {
    if (description.codecPrivate && !AreVp9Features(*description.codecPrivate)) {
        description.codecPrivate.reset();
    }
    return true;
}

// ---- AV1 ---------------------------------------------------------------------------------------------------------

// Behind the structure stands a record or the sequence header. Of anything else nothing is told: the first keyframe has
// the header, too.
bool RefineAv1(const CodecRow& /*row*/, const FormatBlock& /*block*/, CodecDescription& description) {
    description.codecPrivate = codecs::BuildAv1Configuration(*description.codecPrivate);
    return true;
}

// ---- ProRes and pictures that are not compressed -----------------------------------------------------------------

// Which of its kinds it is.
bool RefineProRes(const CodecRow& row, const FormatBlock& /*block*/, CodecDescription& description) {
    const DWORD fourCc = row.subtype->Data1;
    description.codecPrivate.emplace(sizeof(fourCc));
    std::memcpy(description.codecPrivate->data(), &fourCc, sizeof(fourCc));
    return true;
}

bool RefineUncompressed(const CodecRow& row, const FormatBlock& /*block*/, CodecDescription& description) {
    const UncompressedKind* const kind = FindUncompressedKind(*row.subtype);
    if (kind == nullptr) {
        return false;
    }
    description.video->uncompressedFourCc = kind->fourCc;
    return true;
}

// ---- Every other codec -------------------------------------------------------------------------------------------

// The bitmap header with the bytes behind it, which biSize counts for codecs.
bool RefineVfw(const CodecRow& row, const FormatBlock& block, CodecDescription& description) {
    std::vector<BYTE>& bytes = *description.codecPrivate;
    if (*row.format == FORMAT_VideoInfo) {
        const ByteView extra = *block.From(sizeof(VIDEOINFOHEADER));
        bytes.insert(bytes.end(), extra.begin(), extra.end());
    }
    BITMAPINFOHEADER bitmap;
    std::memcpy(&bitmap, bytes.data(), sizeof(bitmap));
    bitmap.biSize = static_cast<DWORD>(IsUncompressed(bitmap) ? sizeof(bitmap) : bytes.size());
    std::memcpy(bytes.data(), &bitmap, sizeof(bitmap));
    return true;
}

constexpr StrictCodec kVideoCodecs[] = {
    {"V_MPEG4/ISO/AVC", RefineRecord<codecs::BuildWholeAvcConfiguration>},
    {"V_MPEGH/ISO/HEVC", RefineRecord<codecs::BuildWholeHevcConfiguration>},
    {"V_THEORA", RefineTheora},
    {"V_VP9", RefineVp9},
    {"V_AV1", RefineAv1},
    {"V_PRORES", RefineProRes},
    {"V_UNCOMPRESSED", RefineUncompressed},
    {"V_MS/VFW/FOURCC", RefineVfw},
};

} // namespace

const StrictCodec* FindStrictVideoCodec(std::string_view codecId) {
    const auto found = std::ranges::find(kVideoCodecs, codecId, &StrictCodec::codecId);
    return found == std::end(kVideoCodecs) ? nullptr : found;
}

} // namespace media
