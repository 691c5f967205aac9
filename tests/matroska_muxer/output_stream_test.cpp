// What the filter does with a stream that has been written before, and with one whose calls fail: the file of that
// very run is read.
#include <gtest/gtest.h>

#include <tuple>

#include "tests/matroska_muxer/muxer_rig.h"
#include "tests/support/layout_check.h"
#include "tests/support/written_files.h"

using namespace test_support;

namespace {

constexpr INT64 kFrames = 6;

MediaTypeValue Vfw() {
    return VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd'));
}

MediaTypeValue Pcm() {
    return WaveType(mediasubtype::kPcm);
}

// A run of keyframes, each of which opens a cluster.
void WriteFile(MuxerRig& rig, INT64 frames) {
    ASSERT_EQ(S_OK, rig.Pause());
    for (INT64 i = 0; i < frames; ++i) {
        EXPECT_EQ(S_OK, rig.Deliver(0, i * 40, 40));
    }
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());
}

void ConnectBoth(MuxerRig& rig) {
    ASSERT_EQ(S_OK, rig.ConnectInput(Vfw()));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
}

void ExpectWholeFile(MuxerRig& rig, size_t blocks) {
    const auto findings = CheckLayout(rig.Layout());
    EXPECT_TRUE(findings.empty()) << findings.front();
    EXPECT_EQ(blocks, rig.Layout().BlocksOf(1).size());
    EXPECT_EQ(blocks, rig.Layout().cues.size());
}

// The file up to the end of its Segment: a stream that cannot be cut keeps the rest of what it held.
ByteView UpToItsEnd(ByteView bytes) {
    const auto layout = ReadLayout(bytes);
    return layout.Segment() == nullptr ? bytes : bytes.first(static_cast<size_t>(layout.Segment()->End()));
}

// ---- A stream that holds something
// -------------------------------------------------------------------------------------

TEST(MuxerOutput, ASecondStartWritesItsFileOverTheFirstFromTheStart) {
    MuxerRig rig;
    ConnectBoth(rig);
    ASSERT_EQ(S_OK, rig.Pause());
    ASSERT_EQ(S_OK, rig.Stop()); // a file without a packet
    WriteFile(rig, kFrames);
    ExpectWholeFile(rig, kFrames);
    SaveForJudges("second_start.mkv", rig.File());
}

TEST(MuxerOutput, AShorterFileCutsOffTheRestOfTheLongerOneBeforeIt) {
    MuxerRig rig;
    ConnectBoth(rig);
    WriteFile(rig, 50);
    const size_t longBytes = rig.File().size();
    WriteFile(rig, 2);
    EXPECT_LT(rig.File().size(), longBytes);
    ExpectWholeFile(rig, 2);
    SaveForJudges("shorter_second_file.mkv", rig.File());
}

TEST(MuxerOutput, AStreamThatCannotBeCutOffIsNoFailure) {
    for (const StreamOperation unable : {StreamOperation::SetSize, StreamOperation::Stat}) {
        MuxerRig rig;
        ConnectBoth(rig);
        WriteFile(rig, 50);
        rig.Sink().Stream().FailFrom(unable, 1, E_NOTIMPL);
        WriteFile(rig, 2);
        const std::vector<BYTE> bytes = rig.File();
        const ByteView whole = UpToItsEnd(bytes);
        EXPECT_TRUE(CheckLayout(whole).empty());
        EXPECT_EQ(2u, ReadLayout(whole).BlocksOf(1).size());
        EXPECT_EQ(unable == StreamOperation::Stat, whole.size() == bytes.size()) << "the end tells the size, too";
    }
}

TEST(MuxerOutput, AFreshStreamIsNeverGivenASize) {
    MuxerRig rig;
    ConnectBoth(rig);
    WriteFile(rig, kFrames);
    EXPECT_TRUE(rig.Sink().Stream().Calls(StreamOperation::SetSize).empty());
}

TEST(MuxerOutput, AStreamThatCannotSeekGetsALiveFileInEitherProfile) {
    for (const MuxProfile profile : {MuxProfile_Compatible, MuxProfile_Strict}) {
        MuxerRig rig;
        VARIANT value{};
        V_UI4(&value) = profile;
        ASSERT_EQ(S_OK, rig.Config()->SetValue(&MKVMUX_Profile, &value));
        ConnectBoth(rig);
        rig.Sink().Stream().FailFrom(StreamOperation::Seek, 1, E_NOTIMPL);
        WriteFile(rig, kFrames);
        const auto layout = rig.Layout();
        ASSERT_NE(nullptr, layout.Segment());
        EXPECT_TRUE(layout.Segment()->unknownSize);
        EXPECT_EQ(static_cast<size_t>(kFrames), layout.BlocksOf(1).size());
        EXPECT_TRUE(layout.cues.empty());
        const auto findings = CheckLayout(layout, {.cut = true, .strict = profile == MuxProfile_Strict});
        EXPECT_TRUE(findings.empty()) << findings.front();
        EXPECT_EQ(0, rig.Graph().EventCount(MuxEvent_OutputFailed)) << "nothing is lost";
        ASSERT_EQ(S_OK, rig.Config()->GetValue(&MKVMUX_Position, &value));
        EXPECT_EQ(V_I8(&value), kFrames * 40 * 10000);
        SaveForJudges(profile == MuxProfile_Strict ? "no_seek.strict" : "no_seek", rig.File(),
                      WrittenFile::CutOnPurpose);
    }
}

TEST(MuxerOutput, AStreamThatStandsSomewhereElseIsWrittenFromItsStart) {
    MuxerRig fresh;
    ConnectBoth(fresh);
    WriteFile(fresh, kFrames);
    MuxerRig rig;
    ConnectBoth(rig);
    rig.Sink().Stream().SetBytes(std::vector<BYTE>(100000, 0xa5));
    LARGE_INTEGER middle{};
    middle.QuadPart = 777;
    ASSERT_EQ(S_OK, rig.Sink().Stream().Seek(middle, STREAM_SEEK_SET, nullptr));
    WriteFile(rig, kFrames);
    ExpectWholeFile(rig, kFrames);
    EXPECT_EQ(fresh.File().size(), rig.File().size());
}

TEST(MuxerOutput, AfterARefusedStartTheNextFileBeginsAtTheStart) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    ASSERT_EQ(S_OK, rig.ConnectInput(MediaTypeValue(MEDIATYPE_Video, mediasubtype::kAvc1, FORMAT_None)));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    EXPECT_EQ(VFW_E_INVALIDMEDIATYPE, rig.Pause());
    EXPECT_EQ(655u, rig.File().size()) << "what was written stays";
    rig.SetRow({1, 0, 0, 0, nullptr, nullptr, -1});
    WriteFile(rig, kFrames);
    EXPECT_TRUE(CheckLayout(rig.Layout()).empty());
    EXPECT_EQ(static_cast<size_t>(kFrames), rig.Layout().BlocksOf(1).size());
    SaveForJudges("behind_a_refused_start.mkv", rig.File());
}

TEST(MuxerOutput, WithoutAnOutputNothingIsWrittenIntoTheOneThatWasThere) {
    MuxerRig rig;
    ConnectBoth(rig);
    WriteFile(rig, kFrames);
    rig.Sink().Unplug();
    const std::vector<BYTE> before = rig.File();
    rig.Sink().Stream().ClearCalls();
    ASSERT_EQ(S_OK, rig.Pause()) << "it runs on without a file";
    EXPECT_EQ(S_OK, rig.Deliver(0, 0, 40));
    rig.Input(0).DeliverEndOfStream();
    EXPECT_TRUE(rig.Graph().WaitForEvent(EC_COMPLETE, std::chrono::minutes(1)));
    EXPECT_EQ(S_OK, rig.Stop());
    EXPECT_TRUE(rig.Sink().Stream().Calls().empty());
    EXPECT_EQ(before, rig.File());
}

// ---- A call that fails once
// ----------------------------------------------------------------------------------------------

enum class Before { Nothing, ALongerFile };

struct FailedRun {
    UINT64 calls = 0; // of the kind that failed
    UINT64 taken = 0; // samples; the others heard of the failed write
    std::vector<BYTE> bytes;
};

// One run in which the n-th call of that kind fails, none for 0.
FailedRun RunWithFailure(Before before, StreamOperation operation, UINT64 n) {
    MuxerRig rig;
    ConnectBoth(rig);
    if (before == Before::ALongerFile) {
        WriteFile(rig, 50);
    }
    auto& stream = rig.Sink().Stream();
    stream.ClearCalls();
    if (n > 0) {
        stream.FailNth(operation, n, E_FAIL);
    }
    FailedRun run;
    EXPECT_EQ(S_OK, rig.Pause());
    for (INT64 i = 0; i < kFrames; ++i) {
        run.taken += rig.Deliver(0, i * 40, 40) == S_OK ? 1 : 0;
    }
    EXPECT_TRUE(rig.EndAll());
    EXPECT_EQ(S_OK, rig.Stop());
    run.calls = stream.Calls(operation).size();
    run.bytes = rig.File();
    return run;
}

// The head is one write, so are the tracks, and then each cluster.
bool IsCluster(StreamOperation operation, UINT64 n, const FailedRun& run) {
    constexpr UINT64 kWritesBefore = 2;
    return operation == StreamOperation::Write && n > kWritesBefore && n <= kWritesBefore + run.taken;
}

void ExpectReadable(ByteView file) {
    const auto layout = ReadLayout(file);
    ASSERT_NE(layout.Segment(), nullptr);
    LayoutExpectations expected;
    expected.cut = layout.Segment()->unknownSize; // the patches may have been given up
    for (const auto& finding : CheckLayout(layout, expected)) {
        ADD_FAILURE() << finding;
    }
    EXPECT_EQ("matroska", layout.docType);
    ASSERT_EQ(1u, layout.tracks.size());
    EXPECT_EQ("V_MS/VFW/FOURCC", layout.tracks[0].codecId);
}

const char* NameOf(StreamOperation operation) {
    switch (operation) {
    case StreamOperation::Write:
        return "write";
    case StreamOperation::Seek:
        return "seek";
    case StreamOperation::SetSize:
        return "set_size";
    default:
        return "stat";
    }
}

void SaveFailureForJudges(ByteView file, StreamOperation operation, UINT64 n) {
    const auto layout = ReadLayout(file);
    const bool isCut = layout.Segment() == nullptr || layout.Segment()->unknownSize;
    SaveForJudges(std::string("failed_") + NameOf(operation) + "_" + std::to_string(n), file,
                  isCut ? WrittenFile::CutOnPurpose : WrittenFile::Finished);
}

class MuxerOutputFailures : public testing::TestWithParam<std::tuple<StreamOperation, Before>> {};

TEST_P(MuxerOutputFailures, LeaveAFileWithHeadTracksAndEveryClusterButTheOneThatFailed) {
    const auto& [operation, before] = GetParam();
    const UINT64 calls = RunWithFailure(before, operation, 0).calls;
    ASSERT_GT(calls, 0u);
    for (UINT64 n = 1; n <= calls; ++n) {
        SCOPED_TRACE(n);
        const FailedRun run = RunWithFailure(before, operation, n);
        const ByteView file = UpToItsEnd(run.bytes);
        ExpectReadable(file);
        EXPECT_EQ(run.taken - (IsCluster(operation, n, run) ? 1 : 0), ReadLayout(file).BlocksOf(1).size());
        if (before == Before::Nothing) {
            SaveFailureForJudges(file, operation, n);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryCall, MuxerOutputFailures,
                         testing::Values(std::tuple(StreamOperation::Write, Before::Nothing),
                                         std::tuple(StreamOperation::Write, Before::ALongerFile),
                                         std::tuple(StreamOperation::Seek, Before::Nothing),
                                         std::tuple(StreamOperation::Seek, Before::ALongerFile),
                                         std::tuple(StreamOperation::Stat, Before::Nothing),
                                         std::tuple(StreamOperation::Stat, Before::ALongerFile),
                                         std::tuple(StreamOperation::SetSize, Before::ALongerFile)));

} // namespace
