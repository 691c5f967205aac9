#include <cstdio>
#include <memory>
#include <stdexcept>

#include <mkvmuxer/mkvmuxer.h>
#include <mkvmuxer/mkvwriter.h>

#include "bench/native/descriptor_stream.h"
#include "bench/native/peers.h"
#include "dshow/ref_time.h"

namespace bench {

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kSamplesPerSecond = 48000;
constexpr int kChannels = 2;
constexpr UINT64 kSubtitleTrackType = 0x11;

void Demand(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error(std::string("libwebm: ") + what);
    }
}

const char* CodecOf(LoadTrack::Kind kind) {
    switch (kind) {
    case LoadTrack::Kind::Avc:
        return "V_MPEG4/ISO/AVC";
    case LoadTrack::Kind::Aac:
        return "A_AAC";
    case LoadTrack::Kind::Srt:
        return "S_TEXT/UTF8";
    case LoadTrack::Kind::Opus:
        break;
    }
    return "A_OPUS";
}

void AddTrack(mkvmuxer::Segment& segment, const LoadTrack& track, int number) {
    if (track.kind == LoadTrack::Kind::Avc) {
        Demand(segment.AddVideoTrack(kWidth, kHeight, number) != 0, "AddVideoTrack");
    } else if (track.kind == LoadTrack::Kind::Srt) {
        mkvmuxer::Track* const added = segment.AddTrack(number);
        Demand(added != nullptr, "AddTrack");
        added->set_type(kSubtitleTrackType);
    } else {
        Demand(segment.AddAudioTrack(kSamplesPerSecond, kChannels, number) != 0, "AddAudioTrack");
    }
    mkvmuxer::Track* const added = segment.GetTrackByNumber(static_cast<UINT64>(number));
    added->set_codec_id(CodecOf(track.kind));
    if (!track.codecPrivate.empty()) {
        Demand(added->SetCodecPrivate(track.codecPrivate.data(), track.codecPrivate.size()), "SetCodecPrivate");
    }
}

// Subtitles have a duration and so a block group, as with ours.
bool AddSubtitle(mkvmuxer::Segment& segment, const LoadPacket& packet) {
    mkvmuxer::Frame frame;
    if (!frame.Init(packet.data, packet.size)) {
        return false;
    }
    frame.set_track_number(packet.track + 1);
    frame.set_timestamp(static_cast<UINT64>(packet.start * kNsPerReferenceTime));
    frame.set_duration(static_cast<UINT64>((packet.stop - packet.start) * kNsPerReferenceTime));
    frame.set_is_key(true);
    return segment.AddGenericFrame(&frame);
}

void WritePackets(mkvmuxer::Segment& segment, const PacketLoad& load) {
    for (const LoadPacket& packet : load.Packets()) {
        const bool added =
            load.Tracks()[packet.track].kind == LoadTrack::Kind::Srt
                ? AddSubtitle(segment, packet)
                : segment.AddFrame(packet.data, packet.size, packet.track + 1,
                                   static_cast<UINT64>(packet.start * kNsPerReferenceTime), packet.keyframe);
        Demand(added, "AddFrame");
    }
}

} // namespace

void WriteWithLibwebm(const PacketLoad& load, const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(fdopen(OpenInPlace(path), "r+b"), std::fclose);
    Demand(file != nullptr, "fdopen");
    mkvmuxer::MkvWriter writer(file.get());
    mkvmuxer::Segment segment;
    Demand(segment.Init(&writer), "Init");
    int number = 0;
    for (const LoadTrack& track : load.Tracks()) {
        AddTrack(segment, track, ++number);
    }
    WritePackets(segment, load);
    Demand(segment.Finalize(), "Finalize");
    Demand(static_cast<UINT64>(writer.Position()) >= load.Bytes(), "the file is smaller than its payload");
}

} // namespace bench
