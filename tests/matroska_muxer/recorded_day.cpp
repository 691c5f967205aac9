#include "tests/matroska_muxer/recorded_day.h"

#include <algorithm>

namespace {

constexpr INT64 kTicksPerSecond = 10000000; // of 100 ns
constexpr INT64 kTicksPerPicture = kTicksPerSecond / 25;
constexpr UINT64 kMostPacketsPerSecond = 1000;
constexpr UINT32 kSoundBytes = 30;
constexpr UINT32 kSubtitleBytes = 20;

// 1,024 samples at 48 kHz are 640,000 / 3 ticks, and 375 such packets are eight seconds.
constexpr INT64 SoundStart(UINT64 packet) {
    return static_cast<INT64>(packet) * 640000 / 3;
}

constexpr UINT64 FirstSoundOf(UINT64 second) {
    return (second * 375 + 7) / 8;
}

} // namespace

DayShape ShapeOf(UINT64 seconds, UINT32 pictureBytes, UINT32 keyframeBytes) {
    DayShape shape;
    shape.seconds = seconds / 8 * 8;
    // From a day on, an hour without a word; in a short one, what is left of it.
    shape.pauseSeconds = std::min<UINT64>(3600, seconds / 3);
    shape.talkSeconds = shape.pauseSeconds / 4;
    shape.silenceBegin = seconds / 4;
    shape.silenceSeconds = std::clamp<UINT64>(seconds / 100, 60, 600);
    shape.stallAt = seconds / 2;
    shape.jumpAt = seconds * 3 / 4;
    shape.jumpSeconds = 10;
    shape.pictureBytes = pictureBytes;
    shape.keyframeBytes = keyframeBytes;
    return shape;
}

std::vector<DayPacket> RecordedDay::PacketsOf(DayTrack track, UINT64 second) const {
    if (second >= m_shape.seconds) {
        return {};
    }
    std::vector<DayPacket> packets = track == DayTrack::Picture ? Pictures(second)
                                     : track == DayTrack::Sound ? Sounds(second)
                                                                : Subtitles(second);
    const INT64 back = second < m_shape.jumpAt ? 0 : static_cast<INT64>(m_shape.jumpSeconds) * kTicksPerSecond;
    for (size_t i = 0; i < packets.size(); ++i) {
        packets[i].number = second * kMostPacketsPerSecond + i;
        packets[i].start -= back;
        packets[i].stop -= back;
    }
    return packets;
}

// A keyframe a second and eight groups: a picture, and the two that are shown before it.
std::vector<DayPacket> RecordedDay::Pictures(UINT64 second) const {
    const auto first = static_cast<INT64>(second) * kTicksPerSecond;
    const auto at = [&](INT64 shown, bool keyframe) {
        const INT64 start = first + shown * kTicksPerPicture;
        return DayPacket{0, start, start + kTicksPerPicture, keyframe ? m_shape.keyframeBytes : m_shape.pictureBytes,
                         keyframe};
    };
    std::vector<DayPacket> pictures{at(0, true)};
    for (INT64 group = 0; group < 8; ++group) {
        for (const INT64 shown : {3, 1, 2}) {
            pictures.push_back(at(group * 3 + shown, false));
        }
    }
    return pictures;
}

std::vector<DayPacket> RecordedDay::Sounds(UINT64 second) const {
    std::vector<DayPacket> sounds;
    if (second >= m_shape.silenceBegin && second < m_shape.silenceBegin + m_shape.silenceSeconds) {
        return sounds;
    }
    for (UINT64 packet = FirstSoundOf(second); packet < FirstSoundOf(second + 1); ++packet) {
        sounds.push_back({0, SoundStart(packet), SoundStart(packet + 1), kSoundBytes, true});
    }
    return sounds;
}

std::vector<DayPacket> RecordedDay::Subtitles(UINT64 second) const {
    if (second % (m_shape.talkSeconds + m_shape.pauseSeconds) >= m_shape.talkSeconds || second % 5 != 0) {
        return {};
    }
    const INT64 start = static_cast<INT64>(second) * kTicksPerSecond + kTicksPerSecond / 2;
    return {{0, start, start + 2 * kTicksPerSecond, kSubtitleBytes, true}};
}

REFERENCE_TIME RecordedDay::EndBefore(UINT64 second) const {
    const UINT64 unjumped = std::min(second, m_shape.jumpAt);
    const UINT64 jumped = second > m_shape.jumpAt ? second - m_shape.jumpSeconds : 0;
    return static_cast<INT64>(std::max(unjumped, jumped)) * kTicksPerSecond;
}

bool RecordedDay::IsDisturbed(UINT64 second, UINT64 margin) const {
    const auto within = [&](UINT64 begin, UINT64 length) {
        return second + margin >= begin && second <= begin + length + margin;
    };
    return within(m_shape.silenceBegin, m_shape.silenceSeconds) || within(m_shape.jumpAt, m_shape.jumpSeconds);
}

const DayPacket* DayCursor::Next() {
    while (m_next == m_packets.size()) {
        if (m_nextSecond >= m_day.Shape().seconds) {
            return nullptr;
        }
        m_packets = m_day.PacketsOf(m_track, m_nextSecond++);
        m_next = 0;
    }
    return &m_packets[m_next++];
}
