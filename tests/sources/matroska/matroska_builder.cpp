#include "tests/sources/matroska/matroska_builder.h"

#include <bit>

namespace test_matroska {

using test_support::Concatenate;
using test_support::RawElement;
using test_support::RawId;
using test_support::RawText;
using test_support::RawUnsigned;

namespace {

constexpr uint32_t kSizeBytes = 8;

RawBytes BlockContent(uint8_t track, int16_t ticks, uint8_t flags, std::string_view payload) {
    const auto time = static_cast<uint16_t>(ticks);
    const RawBytes head{static_cast<uint8_t>(0x80 | track), static_cast<uint8_t>(time >> 8),
                        static_cast<uint8_t>(time & 0xff), flags};
    return Concatenate({head, Text(payload)});
}

} // namespace

RawBytes Text(std::string_view text) {
    return {text.begin(), text.end()};
}

RawBytes Master(uint32_t elementId, std::initializer_list<RawBytes> children) {
    return RawElement(elementId, Concatenate(children), kSizeBytes);
}

RawBytes UnknownMaster(uint32_t elementId, std::initializer_list<RawBytes> children) {
    return Concatenate({RawId(elementId), RawBytes{0xff}, Concatenate(children)});
}

RawBytes Float(uint32_t elementId, double value) {
    const auto bits = std::bit_cast<uint64_t>(value);
    RawBytes bytes;
    for (int shift = 56; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<uint8_t>(bits >> shift & 0xff));
    }
    return RawElement(elementId, bytes);
}

RawBytes Head(std::string_view docType) {
    return Master(id::kHead, {RawText(id::kDocType, docType)});
}

RawBytes TrackEntry(uint8_t number, uint8_t type, std::string_view codec, std::initializer_list<RawBytes> more) {
    return Master(id::kTrackEntry, {RawUnsigned(id::kTrackNumber, number), RawUnsigned(id::kTrackType, type),
                                    RawText(id::kCodecId, codec), Concatenate(more)});
}

RawBytes Cluster(uint64_t ticks, std::initializer_list<RawBytes> children) {
    return Master(id::kCluster, {RawUnsigned(id::kTimestamp, ticks), Concatenate(children)});
}

RawBytes SimpleBlock(uint8_t track, int16_t ticks, uint8_t flags, std::string_view payload) {
    return RawElement(id::kSimpleBlock, BlockContent(track, ticks, flags, payload), kSizeBytes);
}

RawBytes BlockGroup(uint8_t track, int16_t ticks, uint8_t flags, std::string_view payload,
                    std::initializer_list<RawBytes> more) {
    return Master(id::kBlockGroup,
                  {RawElement(id::kBlock, BlockContent(track, ticks, flags, payload), kSizeBytes), Concatenate(more)});
}

RawBytes FileOf(std::initializer_list<RawBytes> tracks, std::initializer_list<RawBytes> rest) {
    return Concatenate({Head(), Master(id::kSegment, {Master(id::kTracks, tracks), Concatenate(rest)})});
}

RawBytes RichFile() {
    const RawBytes video =
        TrackEntry(1, 1, "V_MPEG4/ISO/AVC",
                   {RawElement(id::kCodecPrivate, {1, 100, 0, 11, 0xfd, 0xe1, 0, 3, 0x67, 1, 2, 1, 0, 2, 0x68, 9}),
                    RawUnsigned(id::kDefaultDuration, 40'000'000),
                    Master(id::kVideo, {RawUnsigned(id::kPixelWidth, 320), RawUnsigned(id::kPixelHeight, 240)})});
    const RawBytes stripped = Master(
        id::kContentEncodings,
        {Master(id::kContentEncoding, {Master(id::kContentCompression, {RawUnsigned(id::kContentCompAlgo, 3),
                                                                        RawText(id::kContentCompSettings, "ab")})})});
    const RawBytes audio = TrackEntry(
        2, 2, "A_AC3", {RawUnsigned(id::kDefaultDuration, 32'000'000), stripped, RawText(id::kName, "sound")});
    const RawBytes text = TrackEntry(3, 17, "S_TEXT/UTF8");
    RawBytes clusters;
    for (uint64_t i = 0; i < 40; ++i) {
        const RawBytes cluster =
            Cluster(40 * i, {SimpleBlock(1, 0, i % 10 == 0 ? kKeyframe : 0, std::string("\0\0\2pq", 5)),
                             SimpleBlock(2, 0, kKeyframe | kEbmlLacing, std::string("\x02\x83\xc0xxxyyyyzz", 12)),
                             BlockGroup(3, 5, 0, "text " + std::to_string(i), {RawUnsigned(id::kBlockDuration, 30)})});
        clusters.insert(clusters.end(), cluster.begin(), cluster.end());
    }
    const RawBytes attached = Master(
        id::kAttachments, {Master(id::kAttachedFile, {RawText(id::kFileName, "a.txt"), RawText(id::kFileData, "hello"),
                                                      RawUnsigned(id::kFileUid, 7)})});
    return FileOf({video, audio, text}, {clusters, attached});
}

} // namespace test_matroska
