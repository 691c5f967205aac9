// Going on into another file while one is recorded: which packet is in which file, at what time, and what the
// application is told; both profiles.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "client/module_config.h"
#include "tests/matroska_muxer/muxer_rig.h"
#include "tests/support/layout_check.h"
#include "tests/support/written_files.h"

using namespace test_support;

namespace {

constexpr INT64 kMs = 10000; // of 100 ns
constexpr INT64 kPictureMs = 40;
constexpr INT64 kSoundMs = 20;
constexpr INT64 kGroupMs = 200; // from keyframe to keyframe
constexpr uint64_t kSoundTrack = 1;
constexpr uint64_t kPictureTrack = 2;

// What a packet holds, so that each is known again.
std::vector<BYTE> BytesOf(size_t input, INT64 ms) {
    std::vector<BYTE> bytes(16, static_cast<BYTE>(input));
    bytes[1] = static_cast<BYTE>(ms / 256);
    bytes[2] = static_cast<BYTE>(ms % 256);
    return bytes;
}

std::vector<std::vector<BYTE>> FramesOf(const MatroskaLayout& layout, uint64_t track) {
    std::vector<std::vector<BYTE>> frames;
    for (const LayoutBlock& block : layout.BlocksOf(track)) {
        frames.emplace_back(block.frames.at(0).begin(), block.frames.at(0).end());
    }
    return frames;
}

std::vector<int64_t> TimesOf(const MatroskaLayout& layout, uint64_t track) {
    std::vector<int64_t> times;
    for (const LayoutBlock& block : layout.BlocksOf(track)) {
        times.push_back(block.time);
    }
    return times;
}

class NextOutput : public ::testing::TestWithParam<MuxProfile> {
  protected:
    void SetUp() override {
        ASSERT_EQ(S_OK, m_config.SetProfile(GetParam()));
        ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm))); // its packets of one instant come first
        ASSERT_EQ(S_OK, m_rig.ConnectInput(VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd'))));
        ASSERT_EQ(S_OK, m_rig.ConnectOutput());
    }
    [[nodiscard]] bool IsStrict() const { return GetParam() == MuxProfile_Strict; }

    HRESULT Want(IUnknown* output) const {
        VARIANT value{};
        V_UNKNOWN(&value) = output;
        return m_rig.Config()->SetValue(&MKVMUX_NextOutput, &value);
    }
    HRESULT SetRule(MuxNextOutputRule rule) const {
        rule.size = sizeof(rule);
        VARIANT value{};
        V_BYREF(&value) = &rule;
        return m_rig.Config()->SetValue(&MKVMUX_NextOutputRule, &value);
    }
    HRESULT WantAt(IUnknown* output, INT64 ms, MuxOutputTimes times = MuxOutputTimes_FromZero) const {
        const HRESULT hr = SetRule({0, static_cast<UINT32>(times), ms * kMs, 0, 0});
        return FAILED(hr) ? hr : Want(output);
    }
    HRESULT Deliver(size_t input, INT64 ms, INT64 lengthMs, bool isKeyframe = true) {
        return m_rig.Input(input).Deliver(BytesOf(input, ms), ms * kMs, (ms + lengthMs) * kMs, isKeyframe);
    }
    void DeliverSound(INT64 fromMs, INT64 toMs) {
        for (INT64 ms = fromMs; ms < toMs; ms += kSoundMs) {
            EXPECT_EQ(S_OK, Deliver(0, ms, kSoundMs));
        }
    }
    void DeliverPictures(INT64 fromMs, INT64 toMs) {
        for (INT64 ms = fromMs; ms < toMs; ms += kPictureMs) {
            EXPECT_EQ(S_OK, Deliver(1, ms, kPictureMs, ms % kGroupMs == 0));
        }
    }
    void RecordUntil(INT64 ms) {
        DeliverSound(0, ms);
        DeliverPictures(0, ms);
        ASSERT_TRUE(m_rig.EndAll());
        ASSERT_EQ(S_OK, m_rig.Stop());
    }
    void ExpectWhole(ByteView file, const std::string& name) const {
        const auto findings = CheckLayout(file, {.strict = IsStrict()});
        EXPECT_TRUE(findings.empty()) << name << ": " << findings.front();
        SaveForJudges("next_output_" + name + (IsStrict() ? ".strict" : ""), file);
    }
    // All packets of that track are in the files, in their order.
    static void ExpectAll(const std::vector<MatroskaLayout>& files, uint64_t track, size_t input, INT64 untilMs,
                          INT64 stepMs) {
        std::vector<std::vector<BYTE>> found;
        for (const MatroskaLayout& file : files) {
            for (auto& frame : FramesOf(file, track)) {
                found.push_back(std::move(frame));
            }
        }
        std::vector<std::vector<BYTE>> expected;
        for (INT64 ms = 0; ms < untilMs; ms += stepMs) {
            expected.push_back(BytesOf(input, ms));
        }
        EXPECT_EQ(expected, found) << "track " << track;
    }
    [[nodiscard]] std::vector<FakeGraph::Event> EventsOf(LONG code) {
        std::vector<FakeGraph::Event> found = m_rig.Graph().Events();
        std::erase_if(found, [code](const FakeGraph::Event& event) { return event.code != code; });
        return found;
    }

    MuxerRig m_rig;
    client::ModuleConfig m_config{m_rig.Filter()};
    MemoryStream m_second;
    MemoryStream m_third;
};

TEST_P(NextOutput, CutsAllTracksAtTheTimeOfOneKeyframe) {
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, WantAt(&m_second, 390));
    RecordUntil(1000);
    const std::vector<BYTE> secondBytes = m_second.Bytes();
    const auto first = m_rig.Layout();
    const auto second = ReadLayout(secondBytes);
    EXPECT_EQ(10u, first.BlocksOf(kPictureTrack).size());
    EXPECT_EQ(20u, first.BlocksOf(kSoundTrack).size());
    EXPECT_TRUE(second.BlocksOf(kPictureTrack).at(0).keyframe);
    EXPECT_EQ(0, TimesOf(second, kPictureTrack).front());
    EXPECT_EQ(560, TimesOf(second, kPictureTrack).back());
    EXPECT_EQ(0, TimesOf(second, kSoundTrack).front());
    EXPECT_EQ(580, TimesOf(second, kSoundTrack).back());
    EXPECT_EQ(400.0, first.duration);
    EXPECT_EQ(600.0, second.duration);
    ExpectAll({first, second}, kPictureTrack, 1, 1000, kPictureMs);
    ExpectAll({first, second}, kSoundTrack, 0, 1000, kSoundMs);
    ExpectWhole(m_rig.File(), "first");
    ExpectWhole(secondBytes, "second");
    const auto begun = EventsOf(MuxEvent_NextOutputBegun);
    ASSERT_EQ(1u, begun.size());
    EXPECT_EQ(2, begun[0].parameter1);
    EXPECT_EQ(400, begun[0].parameter2);
    EXPECT_EQ(0, m_rig.Graph().EventCount(MuxEvent_NextOutputFailed));
    EXPECT_EQ(0, m_second.References()) << "it is let go";
}

TEST_P(NextOutput, TimesRunOnWhereThatIsAsked) {
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, WantAt(&m_second, 390, MuxOutputTimes_RunOn));
    RecordUntil(1000);
    const std::vector<BYTE> secondBytes = m_second.Bytes();
    const auto second = ReadLayout(secondBytes);
    EXPECT_EQ(400, TimesOf(second, kPictureTrack).front());
    EXPECT_EQ(400, TimesOf(second, kSoundTrack).front());
    EXPECT_EQ(980, TimesOf(second, kSoundTrack).back());
    ExpectAll({m_rig.Layout(), second}, kSoundTrack, 0, 1000, kSoundMs);
    ExpectWhole(secondBytes, "runs_on");
}

TEST_P(NextOutput, TimesRunOnFromAFirstFileThatWasMoved) {
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, WantAt(&m_second, 300, MuxOutputTimes_RunOn));
    for (const size_t input : {size_t{0}, size_t{1}}) {
        for (INT64 ms = -80; ms < 420; ms += kPictureMs) { // keyframes at -80, 120, 320
            EXPECT_EQ(S_OK, Deliver(input, ms, kPictureMs, (ms + 80) % kGroupMs == 0));
        }
    }
    ASSERT_TRUE(m_rig.EndAll());
    ASSERT_EQ(S_OK, m_rig.Stop());
    const std::vector<BYTE> secondBytes = m_second.Bytes();
    const auto second = ReadLayout(secondBytes);
    EXPECT_EQ(360, TimesOf(m_rig.Layout(), kPictureTrack).back());
    EXPECT_EQ(400, TimesOf(second, kPictureTrack).front());
    EXPECT_EQ(400, TimesOf(second, kSoundTrack).front());
}

// Whichever packet it is wanted at, none is lost, repeated or moved.
TEST_P(NextOutput, LosesAndRepeatsNothingWhereverItIs) {
    for (INT64 atMs = 0; atMs <= 420; atMs += kSoundMs) {
        SCOPED_TRACE(atMs);
        MemoryStream output;
        m_rig.Sink().Stream().SetBytes({});
        ASSERT_EQ(S_OK, m_rig.Pause());
        ASSERT_EQ(S_OK, WantAt(&output, atMs));
        RecordUntil(420);
        const INT64 cutMs = std::max(kGroupMs, (atMs + kGroupMs - 1) / kGroupMs * kGroupMs); // a file has a picture
        const std::vector<BYTE> bytes = output.Bytes();
        const auto first = m_rig.Layout();
        const auto second = ReadLayout(bytes);
        ExpectAll({first, second}, kPictureTrack, 1, 420, kPictureMs);
        ExpectAll({first, second}, kSoundTrack, 0, 420, kSoundMs);
        EXPECT_EQ(static_cast<size_t>(std::min(cutMs, INT64{420}) / kSoundMs), first.BlocksOf(kSoundTrack).size());
        EXPECT_EQ(cutMs >= 420, bytes.empty());
        EXPECT_TRUE(bytes.empty() || CheckLayout(second, {.strict = IsStrict()}).empty());
        EXPECT_TRUE(CheckLayout(first, {.strict = IsStrict()}).empty());
        EXPECT_EQ(0, output.References());
    }
}

TEST_P(NextOutput, PicturesThatAreShownBeforeTheirKeyframeStayWithIt) {
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, WantAt(&m_second, 300));
    DeliverSound(0, 600);
    DeliverPictures(0, 320);
    EXPECT_EQ(S_OK, Deliver(1, 400, kPictureMs, true));
    for (const INT64 ms : {320, 360, 520, 440, 480, 560}) {
        EXPECT_EQ(S_OK, Deliver(1, ms, kPictureMs, false));
    }
    ASSERT_TRUE(m_rig.EndAll());
    ASSERT_EQ(S_OK, m_rig.Stop());
    const std::vector<BYTE> secondBytes = m_second.Bytes();
    const auto second = ReadLayout(secondBytes);
    EXPECT_EQ((std::vector<int64_t>{80, 0, 40, 200, 120, 160, 240}), TimesOf(second, kPictureTrack));
    EXPECT_EQ(80, TimesOf(second, kSoundTrack).front()) << "sound begins with the keyframe, in step with the pictures";
    EXPECT_EQ(20u, m_rig.Layout().BlocksOf(kSoundTrack).size());
    EXPECT_EQ(8u, m_rig.Layout().BlocksOf(kPictureTrack).size());
    ExpectWhole(secondBytes, "open_group");
}

TEST_P(NextOutput, IsCutAtSoundOnceThePicturesHaveEnded) {
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, WantAt(&m_second, 510));
    DeliverPictures(0, 400);
    m_rig.Input(1).DeliverEndOfStream();
    DeliverSound(0, 1000);
    ASSERT_TRUE(m_rig.EndAll());
    ASSERT_EQ(S_OK, m_rig.Stop());
    const std::vector<BYTE> secondBytes = m_second.Bytes();
    const auto second = ReadLayout(secondBytes);
    ASSERT_EQ(24u, second.BlocksOf(kSoundTrack).size()) << "from 520 on";
    EXPECT_EQ(0, TimesOf(second, kSoundTrack).front());
    EXPECT_TRUE(second.BlocksOf(kPictureTrack).empty());
    ExpectAll({m_rig.Layout(), second}, kSoundTrack, 0, 1000, kSoundMs);
    ExpectWhole(secondBytes, "sound_alone");
}

TEST_P(NextOutput, AnOutputThatCannotBeWrittenLeavesTheFileBeforeWhole) {
    m_second.FailFrom(StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, WantAt(&m_second, 390));
    RecordUntil(1000);
    const auto first = m_rig.Layout();
    ExpectAll({first}, kPictureTrack, 1, 1000, kPictureMs);
    ExpectAll({first}, kSoundTrack, 0, 1000, kSoundMs);
    ExpectWhole(m_rig.File(), "refused");
    const auto failed = EventsOf(MuxEvent_NextOutputFailed);
    ASSERT_EQ(1u, failed.size());
    EXPECT_EQ(STG_E_MEDIUMFULL, static_cast<HRESULT>(failed[0].parameter1));
    EXPECT_EQ(2, failed[0].parameter2);
    EXPECT_EQ(0, m_rig.Graph().EventCount(MuxEvent_OutputFailed)) << "nothing is lost";
    EXPECT_EQ(0, m_second.References());
}

TEST_P(NextOutput, EachNextOneMayBeAskedForWhileTheOneBeforeBegins) {
    bool isAsked = false;
    m_second.OnEveryCall([&] {
        if (!isAsked) {
            isAsked = true;
            EXPECT_EQ(S_OK, SetRule({0, MuxOutputTimes_FromZero, 0, 250 * kMs, 0}));
            EXPECT_EQ(S_OK, Want(&m_third));
        }
    });
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, WantAt(&m_second, 390));
    RecordUntil(1000);
    const std::vector<BYTE> secondBytes = m_second.Bytes();
    const std::vector<BYTE> thirdBytes = m_third.Bytes();
    const auto second = ReadLayout(secondBytes);
    const auto third = ReadLayout(thirdBytes);
    EXPECT_EQ(10u, second.BlocksOf(kPictureTrack).size()) << "one group of 200 ms is too short";
    EXPECT_EQ(5u, third.BlocksOf(kPictureTrack).size());
    ExpectAll({m_rig.Layout(), second, third}, kPictureTrack, 1, 1000, kPictureMs);
    ExpectAll({m_rig.Layout(), second, third}, kSoundTrack, 0, 1000, kSoundMs);
    const auto begun = EventsOf(MuxEvent_NextOutputBegun);
    ASSERT_EQ(2u, begun.size());
    EXPECT_EQ(3, begun[1].parameter1);
    EXPECT_EQ(800, begun[1].parameter2);
    ExpectWhole(thirdBytes, "third");
}

TEST_P(NextOutput, OfAFileThatMustHaveASizeWaitsForIt) {
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, SetRule({0, MuxOutputTimes_FromZero, 0, 0, 2000}));
    ASSERT_EQ(S_OK, Want(&m_second));
    RecordUntil(3000);
    const std::vector<BYTE> secondBytes = m_second.Bytes();
    const auto first = m_rig.Layout();
    const auto pictures = first.BlocksOf(kPictureTrack);
    ASSERT_FALSE(pictures.empty());
    const auto lastKeyframe =
        std::find_if(pictures.rbegin(), pictures.rend(), [](const auto& b) { return b.keyframe; });
    constexpr size_t kClusterHead = 17; // in front of a keyframe
    EXPECT_LT(lastKeyframe->offset, 2000 + kClusterHead + 1) << "it was too small there yet";
    EXPECT_GT(pictures.back().offset + 16, 1800u);
    ExpectAll({first, ReadLayout(secondBytes)}, kPictureTrack, 1, 3000, kPictureMs);
}

TEST_P(NextOutput, WhatIsSetLastCountsAndNothingWithdraws) {
    EXPECT_EQ(VFW_E_WRONG_STATE, Want(&m_second)) << "no file is open";
    ASSERT_EQ(S_OK, m_rig.Pause());
    EXPECT_EQ(E_NOINTERFACE, Want(static_cast<IMediaEventSink*>(&m_rig.Graph())));
    EXPECT_EQ(S_OK, WantAt(&m_second, 390));
    VARIANT value{};
    EXPECT_EQ(S_OK, m_rig.Config()->GetValue(&MKVMUX_NextOutput, &value));
    EXPECT_EQ(static_cast<IUnknown*>(&m_second), V_UNKNOWN(&value));
    V_UNKNOWN(&value)->Release();
    EXPECT_EQ(S_OK, Want(nullptr));
    EXPECT_EQ(0, m_second.References());
    EXPECT_EQ(S_OK, m_rig.Config()->GetValue(&MKVMUX_NextOutput, &value));
    EXPECT_EQ(nullptr, V_UNKNOWN(&value));
    EXPECT_EQ(S_OK, Want(&m_second));
    EXPECT_EQ(S_OK, Want(&m_third));
    EXPECT_EQ(0, m_second.References()) << "another one took its place";
    RecordUntil(1000);
    EXPECT_TRUE(m_second.Bytes().empty());
    EXPECT_FALSE(m_third.Bytes().empty());
    EXPECT_EQ(VFW_E_WRONG_STATE, Want(&m_second));
}

TEST_P(NextOutput, StopTellsOfTheOneThatStillWaits) {
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, WantAt(&m_second, 5000));
    RecordUntil(1000);
    ExpectAll({m_rig.Layout()}, kSoundTrack, 0, 1000, kSoundMs);
    EXPECT_TRUE(m_second.Bytes().empty());
    EXPECT_EQ(0, m_second.References());
    const auto failed = EventsOf(MuxEvent_NextOutputFailed);
    ASSERT_EQ(1u, failed.size());
    EXPECT_EQ(E_ABORT, static_cast<HRESULT>(failed[0].parameter1));
}

TEST_P(NextOutput, RulesThatCannotBeChangeNothing) {
    MemoryStream saved;
    ASSERT_EQ(S_OK, m_config.Save(&saved, true));
    EXPECT_EQ(E_INVALIDARG, SetRule({0, 2, 0, 0, 0}));
    EXPECT_EQ(E_INVALIDARG, SetRule({0, 0, -1, 0, 0}));
    EXPECT_EQ(E_INVALIDARG, SetRule({0, 0, 0, -1, 0}));
    MuxNextOutputRule rule{sizeof(rule) - 1, 1, 1, 1, 1};
    VARIANT value{};
    V_BYREF(&value) = &rule;
    EXPECT_EQ(E_INVALIDARG, m_rig.Config()->SetValue(&MKVMUX_NextOutputRule, &value));
    EXPECT_EQ(E_INVALIDARG, m_rig.Config()->GetValue(&MKVMUX_NextOutputRule, &value));
    rule.size = sizeof(rule);
    EXPECT_EQ(S_OK, m_rig.Config()->GetValue(&MKVMUX_NextOutputRule, &value));
    EXPECT_EQ(0u, rule.times);
    EXPECT_EQ(0, rule.notBefore + rule.minDuration);
    EXPECT_EQ(0u, rule.minBytes);
    V_BYREF(&value) = nullptr;
    EXPECT_EQ(E_POINTER, m_rig.Config()->SetValue(&MKVMUX_NextOutputRule, &value));
    EXPECT_EQ(E_POINTER, m_rig.Config()->GetValue(&MKVMUX_NextOutputRule, &value));
    EXPECT_EQ(S_FALSE, m_config.IsDirty()) << "neither key is saved";
}

TEST_P(NextOutput, PositionAndStatisticsCountOn) {
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, WantAt(&m_second, 390));
    RecordUntil(1000);
    REFERENCE_TIME position = 0;
    ASSERT_EQ(S_OK, m_config.GetPosition(position));
    EXPECT_EQ(1000 * kMs, position);
    MuxStatistics statistics{};
    ASSERT_EQ(S_OK, m_config.GetStatistics(statistics));
    const std::vector<BYTE> secondBytes = m_second.Bytes();
    EXPECT_EQ(m_rig.Layout().clusters.size() + ReadLayout(secondBytes).clusters.size(), statistics.clusters);
    EXPECT_EQ(m_rig.Sink().Stream().Calls(StreamOperation::Write).size() +
                  m_second.Calls(StreamOperation::Write).size(),
              statistics.writes);
}

TEST_P(NextOutput, IsWrittenAlsoWhenTheOneBeforeFailed) {
    ASSERT_EQ(S_OK, m_rig.Pause());
    m_rig.Sink().Stream().FailFrom(StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    ASSERT_EQ(S_OK, WantAt(&m_second, 390));
    // All of them wait before the first is written: whoever delivers hears of a failed write.
    for (INT64 ms = 0; ms < 1000; ms += kPictureMs) {
        (void)Deliver(1, ms, kPictureMs, ms % kGroupMs == 0);
    }
    for (INT64 ms = 0; ms < 1000; ms += kSoundMs) {
        (void)Deliver(0, ms, kSoundMs);
    }
    ASSERT_TRUE(m_rig.EndAll());
    ASSERT_EQ(S_OK, m_rig.Stop());
    const std::vector<BYTE> secondBytes = m_second.Bytes();
    EXPECT_EQ(15u, ReadLayout(secondBytes).BlocksOf(kPictureTrack).size());
    EXPECT_EQ(1, m_rig.Graph().EventCount(MuxEvent_OutputFailed));
    ExpectWhole(secondBytes, "behind_a_failed_one");
}

TEST_P(NextOutput, EachFileTellsOfItsOwnFailure) {
    m_rig.Sink().Stream().FailFrom(StreamOperation::Write, 4, STG_E_MEDIUMFULL);
    m_second.FailFrom(StreamOperation::Write, 4, E_ACCESSDENIED);
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, WantAt(&m_second, 590));
    for (INT64 ms = 0; ms < 2000; ms += kPictureMs) {
        (void)Deliver(1, ms, kPictureMs, ms % kGroupMs == 0); // none is taken before there is sound
    }
    for (INT64 ms = 0; ms < 2000; ms += kSoundMs) {
        (void)Deliver(0, ms, kSoundMs);
    }
    ASSERT_TRUE(m_rig.EndAll());
    ASSERT_EQ(S_OK, m_rig.Stop());
    const auto failed = EventsOf(MuxEvent_OutputFailed);
    ASSERT_EQ(2u, failed.size());
    EXPECT_EQ(STG_E_MEDIUMFULL, static_cast<HRESULT>(failed[0].parameter1));
    EXPECT_EQ(E_ACCESSDENIED, static_cast<HRESULT>(failed[1].parameter1));
    EXPECT_EQ(1, m_rig.Graph().EventCount(MuxEvent_NextOutputBegun));
}

INSTANTIATE_TEST_SUITE_P(BothProfiles, NextOutput, ::testing::Values(MuxProfile_Compatible, MuxProfile_Strict));

} // namespace
