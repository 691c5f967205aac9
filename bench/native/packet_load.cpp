#include "bench/native/packet_load.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

#include "dshow/media_subtypes.h"
#include "dshow/ref_time.h"
#include "tests/support/media_types.h"

namespace bench {

namespace {

constexpr DWORD kAvcHighProfile = 100;
constexpr DWORD kAvcLevel31 = 31;
constexpr DWORD kLengthFieldBytes = 4;
constexpr size_t kUnitsInPicture = 8;
constexpr size_t kUnitHeadBytes = 5; // start code or length, and the unit's own first byte
constexpr BYTE kSliceUnit = 0x65;

const std::vector<BYTE> kSps = {0x67, 0x64, 0x00, 0x1f, 0xac, 0xd9, 0x40, 0x50, 0x05, 0xbb, 0x01};
const std::vector<BYTE> kPps = {0x68, 0xee, 0x3c, 0x80};
const std::vector<BYTE> kStereo48k = {0x11, 0x90}; // AAC LC
const std::vector<BYTE> kOpusHead = {'O', 'p', 'u', 's', 'H', 'e', 'a', 'd', 1, 2, 0x38, 1, 0x80, 0xbb, 0, 0, 0, 0, 0};

void Append(std::vector<BYTE>& to, std::initializer_list<BYTE> head, const std::vector<BYTE>& bytes) {
    to.insert(to.end(), head);
    to.insert(to.end(), bytes.begin(), bytes.end());
}

std::vector<BYTE> AvcConfiguration() {
    std::vector<BYTE> out = {1, kSps[1], kSps[2], kSps[3], 0xff, 0xe1};
    Append(out, {0, static_cast<BYTE>(kSps.size())}, kSps);
    Append(out, {1, 0, static_cast<BYTE>(kPps.size())}, kPps);
    return out;
}

test_support::MediaTypeValue AvcType() {
    std::vector<BYTE> sets;
    Append(sets, {0, static_cast<BYTE>(kSps.size())}, kSps);
    Append(sets, {0, static_cast<BYTE>(kPps.size())}, kPps);
    return test_support::Mpeg2VideoType(mediasubtype::kAvc1, {}, sets, kAvcHighProfile, kAvcLevel31, kLengthFieldBytes);
}

test_support::MediaTypeValue ByteStreamType() {
    std::vector<BYTE> sets;
    Append(sets, {0, 0, 0, 1}, kSps);
    Append(sets, {0, 0, 0, 1}, kPps);
    return test_support::Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, sets, kAvcHighProfile, kAvcLevel31);
}

// Looks like compressed data, is the same in every run, and holds no zero, so no start code either.
void FillWithNoise(std::vector<BYTE>& bytes) {
    std::mt19937_64 noise; // NOLINT: the fixed seed is the point
    constexpr UINT64 kNoZero = 0x0101010101010101;
    for (size_t i = 0; i + sizeof(UINT64) <= bytes.size(); i += sizeof(UINT64)) {
        const UINT64 word = noise() | kNoZero;
        std::memcpy(bytes.data() + i, &word, sizeof(word));
    }
}

void CutIntoUnits(BYTE* data, size_t size, PacketLoad::Units units) {
    const size_t unitBytes = size / kUnitsInPicture;
    for (size_t i = 0; i < kUnitsInPicture; ++i) {
        BYTE* const head = data + i * unitBytes;
        const size_t bytes = i + 1 < kUnitsInPicture ? unitBytes : size - i * unitBytes;
        const auto value = static_cast<UINT32>(units == PacketLoad::Units::StartCodes ? 1 : bytes - sizeof(UINT32));
        for (size_t byte = 0; byte < sizeof(value); ++byte) {
            head[byte] = static_cast<BYTE>(value >> (8 * (sizeof(value) - 1 - byte)));
        }
        head[kUnitHeadBytes - 1] = kSliceUnit;
    }
}

} // namespace

LoadTrack TrackOf(LoadTrack::Kind kind) {
    switch (kind) {
    case LoadTrack::Kind::Avc:
        return {kind, AvcType(), AvcConfiguration()};
    case LoadTrack::Kind::Aac:
        return {kind, test_support::WaveType(mediasubtype::kRawAac, {}, kStereo48k), kStereo48k};
    case LoadTrack::Kind::Srt:
        return {kind, test_support::SubtitleType(mediasubtype::kUtf8), {}};
    case LoadTrack::Kind::Opus:
        break;
    }
    return {kind, test_support::WaveType(mediasubtype::kOpus, {}, kOpusHead), kOpusHead};
}

UINT32 PacketLoad::AddTrack(LoadTrack::Kind kind) {
    m_tracks.push_back(TrackOf(kind));
    return static_cast<UINT32>(m_tracks.size() - 1);
}

UINT32 PacketLoad::AddByteStreamTrack() {
    m_tracks.push_back({LoadTrack::Kind::Avc, ByteStreamType(), AvcConfiguration()});
    return static_cast<UINT32>(m_tracks.size() - 1);
}

void PacketLoad::Add(UINT32 track, size_t size, INT64 start, INT64 duration, bool keyframe) {
    m_packets.push_back({nullptr, static_cast<UINT32>(size), track, start, start + duration, keyframe});
    m_byteCount += size;
}

void PacketLoad::Fill(Units units) {
    const auto earlier = [](const LoadPacket& a, const LoadPacket& b) { return a.start < b.start; };
    std::stable_sort(m_packets.begin(), m_packets.end(), earlier);
    m_bytes.resize(m_byteCount + sizeof(UINT64));
    FillWithNoise(m_bytes);
    BYTE* next = m_bytes.data();
    for (LoadPacket& packet : m_packets) {
        packet.data = next;
        if (units != Units::None) {
            CutIntoUnits(next, packet.size, units);
        }
        next += packet.size;
    }
    m_packetsOf.resize(m_tracks.size());
    for (const LoadPacket& packet : m_packets) {
        m_packetsOf[packet.track].push_back(packet);
    }
}

// Pictures as an encoder makes them at 25 per second: a large one each two seconds, and sizes that scatter between. The
// mean makes 555 MB of them.
PacketLoad FilmLoad() {
    constexpr size_t kPictures = 14400;
    constexpr size_t kAudioPackets = 27000;
    constexpr size_t kSubtitles = 298;
    constexpr size_t kPicturesInGroup = 50;
    constexpr double kMeanPictureBytes = 31100;
    constexpr double kKeyframeTimes = 6.0;
    constexpr double kScatter = 0.45;
    constexpr INT64 kPictureMs = 40;
    constexpr size_t kAudioBytes = 341; // 128 kbit/s
    constexpr INT64 kAudioTicks = 1024 * kReferenceTimesPerSecond / 48000;
    constexpr INT64 kSubtitleEveryMs = 1930;
    constexpr size_t kSubtitleBytes = 42;
    PacketLoad load;
    const UINT32 video = load.AddTrack(LoadTrack::Kind::Avc);
    const UINT32 audio = load.AddTrack(LoadTrack::Kind::Aac);
    const UINT32 text = load.AddTrack(LoadTrack::Kind::Srt);
    std::mt19937 noise; // NOLINT: the fixed seed is the point
    std::lognormal_distribution<double> size(std::log(kMeanPictureBytes), kScatter);
    for (size_t i = 0; i < kPictures; ++i) {
        const bool keyframe = i % kPicturesInGroup == 0;
        load.Add(video, static_cast<size_t>(size(noise) * (keyframe ? kKeyframeTimes : 1.0)),
                 static_cast<INT64>(i) * kPictureMs * kReferenceTimesPerMs, kPictureMs * kReferenceTimesPerMs,
                 keyframe);
    }
    for (size_t i = 0; i < kAudioPackets; ++i) {
        load.Add(audio, kAudioBytes - 40 + i % 81, static_cast<INT64>(i) * kAudioTicks, kAudioTicks);
    }
    for (size_t i = 0; i < kSubtitles; ++i) {
        load.Add(text, kSubtitleBytes, static_cast<INT64>(i) * kSubtitleEveryMs * kReferenceTimesPerMs,
                 kReferenceTimesPerSecond);
    }
    load.Fill();
    return load;
}

PacketLoad OpusLoad(UINT32 tracks, size_t packets, size_t packetBytes) {
    constexpr INT64 kPacketTicks = 20 * kReferenceTimesPerMs;
    PacketLoad load;
    for (UINT32 track = 0; track < tracks; ++track) {
        load.AddTrack(LoadTrack::Kind::Opus);
    }
    for (size_t i = 0; i < packets; ++i) {
        load.Add(static_cast<UINT32>(i % tracks), packetBytes, static_cast<INT64>(i / tracks) * kPacketTicks,
                 kPacketTicks);
    }
    load.Fill();
    return load;
}

PacketLoad SlicedVideoLoad(size_t packets, PacketLoad::Units units) {
    constexpr size_t kPictureBytes = 65536;
    constexpr INT64 kPictureTicks = 40 * kReferenceTimesPerMs;
    constexpr size_t kPicturesInGroup = 25;
    PacketLoad load;
    const UINT32 track =
        units == PacketLoad::Units::StartCodes ? load.AddByteStreamTrack() : load.AddTrack(LoadTrack::Kind::Avc);
    for (size_t i = 0; i < packets; ++i) {
        load.Add(track, kPictureBytes, static_cast<INT64>(i) * kPictureTicks, kPictureTicks, i % kPicturesInGroup == 0);
    }
    load.Fill(units);
    return load;
}

} // namespace bench
