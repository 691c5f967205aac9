// Outputs that fail, and recordings that are cut off.
#include <new>
#include <stdexcept>

#include "tests/mkv/writer_fixture.h"
#include "tests/support/written_files.h"

namespace {

using test_support::StreamOperation;

constexpr HRESULT kDiskFull = STG_E_MEDIUMFULL;

class WriterFailuresTest : public WriterTest {
  protected:
    // A file of several clusters with everything in it.
    void WriteScenario() {
        static char s_mimeType[] = "text/plain";
        static BYTE s_data[] = {'h', 'i'};
        m_writer.registerTrack(CinepakType().Get(), Row().Get());
        m_writer.registerTrack(PcmType().Get(), Row().Get());
        m_writer.registerTrack(Utf8Type().Get(), Row().Get());
        if (m_writer.attachmentCount() == 0) {
            const win::Bstr name{WideStringView(OLESTR("note.txt"))};
            m_writer.addAttachment({name.Get(), nullptr, s_mimeType, sizeof(s_data), s_data, 5});
        }
        Open();
        for (INT64 frame = 0; frame < 6; ++frame) {
            Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, frame % 2 == 0, Bytes(500));
            Write(1, frame * 40 * kMs, (frame + 1) * 40 * kMs, true, Bytes(100));
            WriteGroup(2, frame * 40 * kMs, (frame + 1) * 40 * kMs);
        }
        Finish();
    }

    // How many calls of that kind a file takes.
    size_t CountCalls(StreamOperation operation) {
        m_stream.ClearCalls();
        WriteScenario();
        return m_stream.Calls(operation).size();
    }

    void StartOver() {
        m_stream.ClearFailures();
        m_stream.ClearCalls();
    }
};

// A lost part of the head is written again at the end, and so is what is patched; a lost cluster is not.
TEST_F(WriterFailuresTest, AWriteThatFailsOnceNeverThrowsAndEveryOtherOneIsMade) {
    const size_t count = CountCalls(StreamOperation::Write);
    ASSERT_GT(count, 6u);
    for (size_t n = 1; n <= count; ++n) {
        StartOver();
        m_stream.FailNth(StreamOperation::Write, n, kDiskFull);
        EXPECT_NO_THROW(WriteScenario()) << n;
        EXPECT_EQ(m_stream.References(), 0) << n;
        const size_t calls = m_stream.Calls(StreamOperation::Write).size();
        EXPECT_TRUE(calls == count || calls == count + 1) << n << ": " << calls;
    }
}

TEST_F(WriterFailuresTest, WritesThatFailFromTheNthOnNeverThrowAndAreSeenInTheResult) {
    const size_t count = CountCalls(StreamOperation::Write);
    for (size_t n = 1; n <= count; ++n) {
        StartOver();
        m_stream.FailFrom(StreamOperation::Write, n, kDiskFull);
        EXPECT_NO_THROW(WriteScenario()) << n;
        EXPECT_EQ(m_io.lastWriteResult(), kDiskFull) << n;
        EXPECT_EQ(m_stream.References(), 0) << n;
    }
}

TEST_F(WriterFailuresTest, ASeekThatFailsAtAnyCallIsSwallowed) {
    const size_t count = CountCalls(StreamOperation::Seek);
    ASSERT_GT(count, 6u);
    for (size_t n = 1; n <= count; ++n) {
        StartOver();
        m_stream.FailNth(StreamOperation::Seek, n, STG_E_SEEKERROR);
        EXPECT_NO_THROW(WriteScenario()) << n;
        EXPECT_EQ(m_stream.References(), 0) << n;
    }
}

TEST_F(WriterFailuresTest, SeeksThatFailFromTheNthOnAreSwallowed) {
    const size_t count = CountCalls(StreamOperation::Seek);
    for (size_t n = 1; n <= count; ++n) {
        StartOver();
        m_stream.FailFrom(StreamOperation::Seek, n, STG_E_SEEKERROR);
        EXPECT_NO_THROW(WriteScenario()) << n;
        EXPECT_EQ(m_stream.References(), 0) << n;
    }
}

TEST_F(WriterFailuresTest, AfterAFailedFileTheNextOneIsWhole) {
    m_stream.FailFrom(StreamOperation::Seek, 1, STG_E_SEEKERROR);
    m_stream.FailFrom(StreamOperation::Write, 3, kDiskFull);
    WriteScenario();
    StartOver();
    WriteScenario();
    EXPECT_EQ(File().tracks.size(), 3u);
    EXPECT_EQ(File().BlocksOf(1).size(), 6u);
    EXPECT_EQ(File().cues.size(), 9u);
}

TEST_F(WriterFailuresTest, SeeksThatFailInTheFinalisationLeaveTheFileAsARecordingThatWasCutOff) {
    RegisterVideo();
    Open();
    for (INT64 frame = 0; frame < 10; ++frame) {
        Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, true);
    }
    m_stream.ClearCalls();
    m_stream.FailFrom(StreamOperation::Seek, 3, STG_E_SEEKERROR); // behind the two of the Info
    Finish();
    const auto layout = Snapshot();
    EXPECT_TRUE(layout.Segment()->unknownSize);
    EXPECT_EQ(layout.clusters.size(), 10u);
    EXPECT_EQ(layout.BlocksOf(1).size(), 10u);
    EXPECT_EQ(m_writer.duration(), 400e6);
}

TEST_F(WriterFailuresTest, BytesThatNoClusterTookAreNoPartOfTheSegmentsSize) {
    constexpr ULONG kStrayBytes = 5;
    RegisterVideo();
    Open();
    Write(0, 0, 40 * kMs, true);
    m_stream.AnswerNextWrite(S_OK, kStrayBytes);
    Write(0, 40 * kMs, 80 * kMs, true); // the cluster of the first frame is lost
    m_stream.ClearCalls();
    m_stream.FailNth(StreamOperation::Seek, 1, STG_E_SEEKERROR); // back to where it began
    m_stream.FailNth(StreamOperation::Seek, 2, STG_E_SEEKERROR);
    Write(0, 80 * kMs, 120 * kMs, true); // that of the second goes behind what there is of it
    Finish();
    const auto layout = Snapshot();
    ASSERT_NE(layout.Segment(), nullptr);
    EXPECT_FALSE(layout.Segment()->unknownSize);
    EXPECT_EQ(layout.Segment()->End(), layout.file.size() - kStrayBytes);
}

// An output whose writes throw from some moment on, as memory that runs out makes them.
class ThrowingIO : public CMkvIO {
  public:
    size_t write(const void* buffer, size_t size) override {
        if (throws) {
            throw std::bad_alloc();
        }
        return CMkvIO::write(buffer, size);
    }
    bool throws = false;
};

TEST_F(WriterFailuresTest, AnExceptionOfTheLastClusterReachesWhoeverClosesAndNothingIsCleanedUp) {
    ThrowingIO io;
    io.setStream(&m_stream);
    RegisterVideo();
    m_writer.Open(&io);
    Write(0, 0, 40 * kMs, true);
    Write(0, 40 * kMs, 80 * kMs, true);
    io.throws = true;
    EXPECT_THROW(m_writer.Close(), std::bad_alloc);
    EXPECT_TRUE(m_writer.isOpen());
    io.throws = false;
    m_writer.Close(); // what was there is still there
    m_writer.detach();
    const auto layout = Snapshot();
    EXPECT_TRUE(test_support::CheckLayout(layout).empty());
    EXPECT_EQ(layout.tracks.size(), 1u);
    EXPECT_EQ(layout.BlocksOf(1).size(), 1u) << "the last cluster is lost";
}

TEST_F(WriterFailuresTest, AnExceptionOfAPatchIsSwallowed) {
    ThrowingIO io;
    io.setStream(&m_stream);
    RegisterAudio();
    m_writer.Open(&io);
    Write(0, 0, 40 * kMs);
    m_stream.ClearCalls();
    m_stream.FailNth(StreamOperation::Seek, 1, STG_E_SEEKERROR);
    EXPECT_NO_THROW(m_writer.Close());
    m_writer.detach();
    EXPECT_EQ(Snapshot().BlocksOf(1).size(), 1u);
    RegisterAudio();
    m_writer.Open(&io);
    m_writer.Close();
    m_writer.detach();
    EXPECT_EQ(Snapshot().tracks.size(), 1u) << "the clean-up was made";
}

TEST_F(WriterFailuresTest, AnOutputWithoutAStreamCannotBeOpened) {
    m_writer.registerTrack(CinepakType().Get(), Row().Get());
    EXPECT_THROW(m_writer.Open(&m_io), std::runtime_error); // the library misses its bytes
    m_writer.abandon();
    EXPECT_FALSE(m_writer.isOpen());
    WriteScenario();
    EXPECT_EQ(File().tracks.size(), 3u);
}

// ---- Recordings that were cut off ----------------------------------------------------------------------------------

TEST_F(WriterFailuresTest, ACutRecordingShowsEveryClusterThatWasWritten) {
    RegisterVideo();
    RegisterAudio();
    Open();
    for (INT64 frame = 0; frame < 20; ++frame) {
        Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, frame % 4 == 0);
        Write(1, frame * 40 * kMs, (frame + 1) * 40 * kMs);
    }
    const auto cut = Snapshot(); // four of five clusters have been written
    test_support::SaveForJudges("WriterFailuresTest.ACutRecordingShowsEveryClusterThatWasWritten", cut.file,
                                test_support::WrittenFile::CutOnPurpose);
    for (const auto& finding : test_support::CheckLayout(cut, {.cut = true})) {
        ADD_FAILURE() << finding;
    }
    ASSERT_NE(cut.Segment(), nullptr);
    EXPECT_TRUE(cut.Segment()->unknownSize);
    EXPECT_EQ(cut.tracks.size(), 2u);
    EXPECT_EQ(cut.clusters.size(), 4u);
    EXPECT_EQ(cut.BlocksOf(1).size(), 16u);
    EXPECT_EQ(cut.BlocksOf(2).size(), 16u);
    Finish();
}

TEST_F(WriterFailuresTest, ARecordingCutAtAnyByteShowsItsWholeClusters) {
    RegisterVideo();
    Open();
    std::vector<size_t> ends; // of the clusters
    for (INT64 frame = 0; frame < 4; ++frame) {
        Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, true);
        ends.push_back(m_stream.Bytes().size());
    }
    const Bytes bytes = m_stream.Bytes();
    for (size_t size = ends[1]; size <= bytes.size(); ++size) {
        const Bytes cut(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size));
        const auto layout = test_support::ReadLayout(cut);
        size_t whole = 0;
        for (size_t i = 1; i < ends.size(); ++i) {
            whole += ends[i] <= size ? 1 : 0;
        }
        ASSERT_GE(layout.clusters.size(), whole) << size;
        ASSERT_GE(layout.BlocksOf(1).size(), whole) << size;
    }
    Finish();
}

} // namespace
