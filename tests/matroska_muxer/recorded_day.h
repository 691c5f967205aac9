// RecordedDay: what a recorder delivers in a day, second by second: H.264 pictures with B-frames, AAC, and subtitles
// with long pauses; the sound falls silent once and returns, and once the clock jumps back. Made up while it is asked
// for.
//
// Units: seconds, 100 ns where named so, bytes. Owner: the test. Threads: as a value.
#pragma once

#include <cstddef>
#include <vector>

#include "win/platform.h"

struct DayShape {
    UINT64 seconds = 0;        // whole eights: then picture and sound end together
    UINT64 talkSeconds = 0;    // with subtitles, and then
    UINT64 pauseSeconds = 0;   // none
    UINT64 silenceBegin = 0;   // of the sound
    UINT64 silenceSeconds = 0; // longer than the recorder's lead
    UINT64 stallAt = 0;        // the stream stops taking bytes for a while
    UINT64 jumpAt = 0;         // from here on every time is earlier by
    UINT64 jumpSeconds = 0;
    UINT32 pictureBytes = 0; // of a picture that is no keyframe
    UINT32 keyframeBytes = 0;
};

// A day's course in as many seconds.
[[nodiscard]] DayShape ShapeOf(UINT64 seconds, UINT32 pictureBytes, UINT32 keyframeBytes);

enum class DayTrack { Picture, Sound, Subtitle };
inline constexpr DayTrack kDayTracks[] = {DayTrack::Picture, DayTrack::Sound, DayTrack::Subtitle};

struct DayPacket {
    UINT64 number = 0; // stands in the packet's first eight bytes
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    UINT32 size = 0;
    bool keyframe = true;
};

class RecordedDay {
  public:
    explicit RecordedDay(const DayShape& shape) : m_shape(shape) {}

    [[nodiscard]] const DayShape& Shape() const { return m_shape; }
    // What the track delivers in that second, in order of delivery.
    [[nodiscard]] std::vector<DayPacket> PacketsOf(DayTrack track, UINT64 second) const;
    // The greatest time that a packet of the seconds before this one ends at.
    [[nodiscard]] REFERENCE_TIME EndBefore(UINT64 second) const;
    // Whether the tracks are apart there: one of them is silent, or has jumped back before the others.
    [[nodiscard]] bool IsDisturbed(UINT64 second, UINT64 margin) const;

  private:
    [[nodiscard]] std::vector<DayPacket> Pictures(UINT64 second) const;
    [[nodiscard]] std::vector<DayPacket> Sounds(UINT64 second) const;
    [[nodiscard]] std::vector<DayPacket> Subtitles(UINT64 second) const;

    DayShape m_shape;
};

// The packets of one track, one after the other.
class DayCursor {
  public:
    DayCursor(const RecordedDay& day, DayTrack track) : m_day(day), m_track(track) {}

    // Null behind the last one.
    [[nodiscard]] const DayPacket* Next();
    // Of the packet that Next gave last.
    [[nodiscard]] UINT64 Second() const { return m_nextSecond - 1; }

  private:
    const RecordedDay& m_day;
    const DayTrack m_track;
    UINT64 m_nextSecond = 0;
    std::vector<DayPacket> m_packets;
    size_t m_next = 0;
};
