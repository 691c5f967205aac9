#include "tests/support/sample_files.h"

#include <bit>

#include "tests/support/ebml_schema.h"

namespace test_support {

namespace {

using namespace ebml_id;

constexpr uint32_t kSeekHeadPlaceBytes = 100;
constexpr uint32_t kVoidHeadBytes = 2;

RawBytes FixedUnsigned(uint32_t id, uint64_t value) {
    RawBytes data;
    for (int shift = 24; shift >= 0; shift -= 8) {
        data.push_back(static_cast<uint8_t>(value >> shift));
    }
    return RawElement(id, data);
}

RawBytes MakeHead() {
    return RawElement(kHead, Concatenate({RawUnsigned(kReadVersion, 1), RawText(kDocType, "matroska"),
                                          RawUnsigned(kDocTypeVersion, 2), RawUnsigned(kDocTypeReadVersion, 2)}));
}

RawBytes MakeSeek(uint32_t id, uint64_t position) {
    return RawElement(kSeek, Concatenate({RawElement(kSeekId, RawId(id)), FixedUnsigned(kSeekPosition, position)}));
}

RawBytes MakeInfo(double durationMs) {
    const auto bits = std::bit_cast<uint64_t>(durationMs);
    RawBytes duration;
    for (int shift = 56; shift >= 0; shift -= 8) {
        duration.push_back(static_cast<uint8_t>(bits >> shift));
    }
    return RawElement(kInfo, Concatenate({RawUnsigned(kTimestampScale, 1000000), RawElement(kDuration, duration),
                                          RawText(kMuxingApp, "by hand"), RawText(kWritingApp, "by hand")}));
}

RawBytes MakeTracks() {
    const RawBytes size = Concatenate({RawUnsigned(kPixelWidth, 320), RawUnsigned(kPixelHeight, 240)});
    const RawBytes video =
        Concatenate({RawUnsigned(kTrackNumber, 1), RawUnsigned(kTrackUid, 11), RawUnsigned(kTrackType, 1),
                     RawText(kCodecId, "V_VP8"), RawText(kLanguage, "eng"), RawElement(kVideo, size)});
    const RawBytes text =
        Concatenate({RawUnsigned(kTrackNumber, 2), RawUnsigned(kTrackUid, 12), RawUnsigned(kTrackType, 17),
                     RawText(kCodecId, "S_TEXT/UTF8"), RawText(kName, "Titles \"1\""), RawUnsigned(kFlagDefault, 0)});
    return RawElement(kTracks, Concatenate({RawElement(kTrackEntry, video), RawElement(kTrackEntry, text)}), 2);
}

RawBytes MakeFirstCluster(uint8_t secondTrack) {
    return RawElement(kCluster, Concatenate({RawUnsigned(kTimestamp, 50), RawSimpleBlock(1, -50, 0x80, {1, 2, 3}),
                                             RawSimpleBlock(secondTrack, -10, 0x00, {4, 5})}));
}

RawBytes MakeSecondCluster(uint64_t time) {
    const RawBytes block = RawElement(kBlock, {0x82, 0, 0, 0, 'h', 'i'});
    return RawElement(kCluster,
                      Concatenate({RawUnsigned(kTimestamp, time),
                                   RawElement(kBlockGroup, Concatenate({block, RawUnsigned(kBlockDuration, 500)}))}));
}

uint64_t Shifted(uint64_t position, int64_t error) {
    return position + static_cast<uint64_t>(error);
}

RawBytes MakeCues(const SampleFileOptions& options, uint64_t clusterPosition) {
    // Behind the Timestamp of three bytes and the first block of ten.
    constexpr uint64_t kSecondBlockPosition = 13;
    const RawBytes positions =
        Concatenate({RawUnsigned(kCueTrack, options.cueTrack),
                     FixedUnsigned(kCueClusterPosition, Shifted(clusterPosition, options.cuePositionError)),
                     FixedUnsigned(kCueRelativePosition, Shifted(kSecondBlockPosition, options.cueRelativeError)),
                     RawUnsigned(kCueBlockNumber, options.cueBlockNumber)});
    return RawElement(kCues, RawElement(kCuePoint, Concatenate({RawUnsigned(kCueTime, options.cueTime),
                                                                RawElement(kCueTrackPositions, positions)})));
}

} // namespace

RawBytes MakeSampleFile(const SampleFileOptions& options) {
    const RawBytes info = MakeInfo(options.durationMs);
    const RawBytes tracks = MakeTracks();
    const RawBytes first = MakeFirstCluster(options.secondBlockTrack);
    const RawBytes second = MakeSecondCluster(options.secondClusterTime);
    const uint64_t tracksPosition = kSeekHeadPlaceBytes + info.size();
    const uint64_t firstPosition = tracksPosition + tracks.size();
    const uint64_t cuesPosition = firstPosition + first.size() + second.size();

    RawBytes entries = Concatenate(
        {MakeSeek(kInfo, Shifted(kSeekHeadPlaceBytes, options.seekPositionError)), MakeSeek(kTracks, tracksPosition)});
    if (options.listCues) {
        entries = Concatenate({entries, MakeSeek(kCues, cuesPosition)});
    }
    const RawBytes seekHead = RawElement(kSeekHead, entries);
    const RawBytes padding = RawElement(kVoid, RawBytes(kSeekHeadPlaceBytes - kVoidHeadBytes - seekHead.size(), 0));
    const RawBytes content =
        Concatenate({seekHead, padding, info, tracks, first, second, MakeCues(options, firstPosition)});
    return Concatenate(
        {MakeHead(), RawId(kSegment), RawSize(Shifted(content.size(), options.segmentSizeError), 5), content});
}

} // namespace test_support
