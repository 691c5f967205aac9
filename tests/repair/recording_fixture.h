// RecordingTest: a recording of the writer, as a whole file and as what lies there when it is cut off at its end.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mkv/mkv_writer.h"
#include "repair/finish_recording.h"
#include "tests/support/matroska_layout.h"
#include "tests/support/media_type_value.h"
#include "tests/support/memory_stream.h"

// Pictures of 40 ms with a keyframe every tenth, sound of 20 ms, and what the test adds.
struct RecordedContent {
    bool hasVideo = true;
    bool hasSubtitles = false;
    bool hasAttachment = false;
    bool hasAnnotations = false; // chapters and tags, where the profile has any
    bool hasStatistics = false;  // where the profile has any
    bool soundFirst = false;     // half a second of it comes in front of the first picture
    // Tracks behind all others: pictures whose keyframes are others, and sound that comes in front of the first one's.
    bool hasSecondVideo = false;
    bool hasSecondSound = false;
    int pictures = 60;     // as long is the sound
    UINT64 indexBytes = 0; // kept in front of the clusters, where the profile keeps any
};

class RecordingTest : public testing::TestWithParam<MuxProfile> {
  protected:
    using Bytes = std::vector<BYTE>;

    // Writes it in the test's profile, and keeps the finished file and the one that was cut off behind its last
    // cluster.
    void Record(const RecordedContent& content = {});

    // Where elements of the finished file begin.
    [[nodiscard]] std::vector<UINT64> ClusterStarts() const;
    [[nodiscard]] UINT64 ClustersEnd() const;
    [[nodiscard]] UINT64 HeadEnd() const; // of the tracks, or of the attachments

    // Repairs these bytes, which then lie in the stream.
    repair::Recording Repair(const Bytes& bytes);
    // Says why these bytes are not repaired, and sees to it that they stay as they are.
    std::string RefusalOf(const Bytes& bytes);

    Bytes m_finished;
    Bytes m_cut;
    test_support::MemoryStream m_stream;

  private:
    void Register(const RecordedContent& content);
    void WriteAll(const RecordedContent& content);
    void Add(UINT32 stream, INT64 startMs, INT64 lengthMs, bool keyframe, bool blockGroup = false);

    CMkvWriter m_writer;
};
