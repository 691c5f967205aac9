#include "tests/repair/recording_fixture.h"

#include <algorithm>

#include "repair/refusal.h"
#include "tests/support/media_types.h"
#include "tests/support/written_files.h"

namespace {

constexpr INT64 kUnitsInMs = 10000; // of 100 ns
constexpr INT64 kPictureMs = 40;
constexpr INT64 kSoundMs = 20;
constexpr int kPicturesAKeyframe = 10;
constexpr INT64 kLinesMs = 500;

records::CTrackSettingsRow Row() {
    return records::CTrackSettingsRow(TrackSettings{0, 1, 0, 0, nullptr, nullptr, -1});
}

} // namespace

void RecordingTest::Add(UINT32 stream, INT64 startMs, INT64 lengthMs, bool keyframe, bool blockGroup) {
    const Bytes payload(static_cast<size_t>(5 + startMs % 7), static_cast<BYTE>(startMs));
    m_writer.WritePacket({startMs * kUnitsInMs, (startMs + lengthMs) * kUnitsInMs, payload.data(),
                          static_cast<UINT32>(payload.size()), keyframe, stream, blockGroup});
}

void RecordingTest::Register(const RecordedContent& content) {
    m_writer.registerTrack(test_support::WaveType(mediasubtype::kPcm).Get(), Row().Get());
    if (content.hasVideo) {
        m_writer.registerTrack(test_support::VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd')).Get(), Row().Get());
    }
    if (content.hasSubtitles) {
        m_writer.registerTrack(test_support::SubtitleType(mediasubtype::kUtf8).Get(), Row().Get());
    }
    if (content.hasSecondVideo) {
        m_writer.registerTrack(test_support::VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd')).Get(), Row().Get());
    }
    if (content.hasSecondSound) {
        m_writer.registerTrack(test_support::WaveType(mediasubtype::kPcm).Get(), Row().Get());
    }
    if (content.hasAttachment) {
        BYTE data[] = {1, 2, 3};
        char mimeType[] = "text/plain";
        win::Bstr name(OLESTR("a.txt"));
        m_writer.addAttachment({name.Get(), nullptr, mimeType, sizeof(data), data, 7});
    }
    if (content.hasAnnotations) {
        records::Chapter chapter;
        chapter.title = OLESTR("A chapter");
        (void)m_writer.chapters().Add(chapter);
        records::Tag tag;
        tag.name = OLESTR("ARTIST");
        tag.value = OLESTR("Somebody");
        (void)m_writer.tags().Add(tag);
    }
}

void RecordingTest::WriteAll(const RecordedContent& content) {
    constexpr UINT32 kSound = 0;
    const UINT32 pictures = kSound + 1;
    const UINT32 lines = content.hasVideo ? pictures + 1 : pictures;
    const UINT32 secondPictures = content.hasSubtitles ? lines + 1 : lines;
    const UINT32 secondSound = content.hasSecondVideo ? secondPictures + 1 : secondPictures;
    const INT64 firstPicture = content.soundFirst ? kLinesMs : 0;
    for (INT64 time = 0; time < firstPicture; time += kSoundMs) {
        Add(kSound, time, kSoundMs, true);
    }
    for (int i = 0; i < content.pictures; ++i) {
        const INT64 time = firstPicture + i * kPictureMs;
        if (content.hasVideo) {
            Add(pictures, time, kPictureMs, i % kPicturesAKeyframe == 0);
        }
        if (content.hasSecondVideo) {
            Add(secondPictures, time, kPictureMs, i % kPicturesAKeyframe == kPicturesAKeyframe / 2);
        }
        if (content.hasSecondSound) {
            Add(secondSound, time, kPictureMs, true);
        }
        Add(kSound, time, kSoundMs, true);
        Add(kSound, time + kSoundMs, kSoundMs, true);
        if (content.hasSubtitles && time % kLinesMs == 0) {
            Add(lines, time, kLinesMs, true, true);
        }
    }
}

void RecordingTest::Record(const RecordedContent& content) {
    test_support::MemoryStream stream;
    CMkvIO io;
    io.setStream(&stream);
    Register(content);
    records::FileOptions options;
    options.profile = GetParam();
    options.title = OLESTR("A title");
    options.trackStatistics = content.hasStatistics;
    options.indexBytes = content.indexBytes;
    m_writer.Open(&io, options);
    WriteAll(content);
    const Bytes open = stream.Bytes();
    m_writer.Close();
    m_writer.detach();
    io.releaseStream();
    m_finished = stream.Bytes();
    // What Stop patched stands in front of the tracks; the last clusters come with it.
    const UINT64 patched =
        test_support::ReadLayout(m_finished).Segment()->Child(test_support::ebml_id::kTracks)->offset;
    m_cut = m_finished;
    std::copy_n(open.begin(), patched, m_cut.begin());
    m_cut.resize(ClustersEnd());
    if (content.indexBytes > 0) { // between the tracks and the clusters, as it was
        std::copy(open.begin(), open.begin() + static_cast<ptrdiff_t>(HeadEnd()), m_cut.begin());
    }
}

std::vector<UINT64> RecordingTest::ClusterStarts() const {
    std::vector<UINT64> starts;
    const auto layout = test_support::ReadLayout(m_finished);
    for (const auto& cluster : layout.clusters) {
        starts.push_back(cluster.offset);
    }
    return starts;
}

UINT64 RecordingTest::ClustersEnd() const {
    const auto layout = test_support::ReadLayout(m_finished);
    return layout.Segment()->Children(test_support::ebml_id::kCluster).back()->End();
}

UINT64 RecordingTest::HeadEnd() const {
    return ClusterStarts().front();
}

repair::Recording RecordingTest::Repair(const Bytes& bytes) {
    m_stream.SetBytes(bytes);
    const repair::Recording recording = repair::SurveyRecording(m_stream, [](UINT64, UINT64) {});
    repair::FinishRecording(m_stream, recording);
    return recording;
}

std::string RecordingTest::RefusalOf(const Bytes& bytes) {
    try {
        Repair(bytes);
    } catch (const repair::Refusal& refusal) {
        EXPECT_EQ(m_stream.Bytes(), bytes) << "a file that is refused stays as it is";
        return refusal.what();
    }
    return "it was repaired";
}
