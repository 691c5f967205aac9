// An output whose every call fails, one after the other, once and from then on: the run ends, the upstream filters and
// the graph are told, the file of that very run holds all that the output said it took, and the next run is whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>

#include "tests/faults/file_judge.h"
#include "tests/faults/hang_guard.h"

using namespace test_support;

namespace faults {

namespace {

// What a write answers, and how much of a hundred bytes it takes.
struct WriteFault {
    const char* name;
    HRESULT result;
    unsigned keptPercent;

    // What the upstream filter and the graph hear of it.
    [[nodiscard]] HRESULT Told() const { return FAILED(result) ? result : STG_E_WRITEFAULT; }
};

constexpr WriteFault kWriteFaults[] = {
    {"an_error", E_FAIL, 0},
    {"an_error_behind_a_part", STG_E_CANTSAVE, 50},
    {"an_error_behind_all", STG_E_CANTSAVE, 100},
    {"a_full_medium", STG_E_MEDIUMFULL, 0},
    {"a_full_medium_that_takes_what_fits", STG_E_MEDIUMFULL, 70},
    {"a_short_write", S_OK, 50},
    {"a_success_that_takes_nothing", S_OK, 0},
    {"another_success_that_takes_less", S_FALSE, 50},
};

void PrintTo(const WriteFault& fault, std::ostream* stream) {
    *stream << fault.name;
}

Outcome RunFaultless(FaultRig& rig) {
    EXPECT_EQ(S_OK, rig.Build());
    rig.Stream().KeepWrites();
    return rig.Run();
}

Frames AllFrames() {
    Frames frames;
    for (size_t input = 0; input < kInputs; ++input) {
        for (size_t number = 0; number < kFrames; ++number) {
            frames.insert({input, number});
        }
    }
    return frames;
}

Frames Without(const Frames& all, const Frames& some) {
    Frames left;
    std::ranges::set_difference(all, some, std::inserter(left, left.end()));
    return left;
}

// What one fault did to a run, and what it may have done.
class JudgedRun {
  public:
    JudgedRun(const FileJudge& judge, const Outcome& outcome)
        : m_judge(judge), m_outcome(outcome), m_taken(FileJudge::TakenByFilter(outcome)) {}

    void ExpectEnded() const {
        EXPECT_EQ(S_OK, m_outcome.pause);
        EXPECT_EQ(S_OK, m_outcome.stop);
    }

    // All that the output took is there; of a damaged head, a reader looks for the clusters.
    void ExpectAllThatWasWritten(bool isHeadDamaged) const {
        const Frames found = Found(isHeadDamaged);
        const Frames written = m_judge.TakenByOutput(m_outcome);
        EXPECT_TRUE(std::ranges::includes(found, written)) << "a cluster is lost that the output took";
        EXPECT_TRUE(std::ranges::includes(m_taken, found)) << "frames that the filter refused";
    }

    // A cluster is there with all that the filter took for it, or is not.
    void ExpectNoHalfClusters(bool isHeadDamaged) const {
        const Frames found = Found(isHeadDamaged);
        for (const Frame& lost : Without(m_taken, found)) {
            for (const Frame& other : found) {
                EXPECT_NE(ClusterOf(lost), ClusterOf(other)) << "frame " << lost.number << " of input " << lost.input;
            }
        }
    }

    // The clusters that are not there.
    [[nodiscard]] std::set<size_t> LostClusters() const {
        std::set<size_t> lost;
        for (const Frame& frame : Without(m_taken, Found(false))) {
            lost.insert(ClusterOf(frame));
        }
        return lost;
    }

  private:
    [[nodiscard]] Frames Found(bool isHeadDamaged) const {
        return isHeadDamaged ? m_judge.InClusters(m_outcome) : m_judge.InFile(m_outcome.file);
    }

    const FileJudge& m_judge;
    const Outcome& m_outcome;
    const Frames m_taken;
};

// The next run of the same filter is as if nothing had been.
void ExpectWholeNextRun(FaultRig& rig, const FileJudge& judge) {
    rig.Stream().ClearFailures();
    const Outcome next = rig.Run();
    EXPECT_FALSE(next.IsTold());
    EXPECT_EQ(AllFrames(), judge.InFile(next.file));
    judge.ExpectSound(next.file, false);
}

class StreamFaults : public testing::TestWithParam<std::tuple<WriteFault, size_t, MuxProfile>> {};

bool LiesBehindClusters(const KeptWrite& write) {
    constexpr std::pair<BYTE, BYTE> kCues{0x1c, 0x53};
    constexpr std::pair<BYTE, BYTE> kTags{0x12, 0x54};
    const std::pair<BYTE, BYTE> begin =
        write.bytes.size() > 1 ? std::pair(write.bytes[0], write.bytes[1]) : std::pair<BYTE, BYTE>();
    return begin == kCues || begin == kTags;
}

// Which clusters lost bytes, by the writes of the run: those from the failed ones on that lie behind the head and are
// neither cues nor tags. A patch of the head and those two are no clusters.
bool LostAClustersBytes(const Outcome& outcome) {
    for (size_t i = 0; i < outcome.writes.size(); ++i) {
        const KeptWrite& write = outcome.writes[i];
        if (!write.IsWhole() && !LiesBehindClusters(write) && !FileJudge::IsOfHead(outcome, i)) {
            return true;
        }
    }
    return false;
}

void ExpectTold(const Outcome& outcome, const WriteFault& fault) {
    EXPECT_EQ(std::vector<HRESULT>{fault.Told()}, outcome.events) << "the graph, once";
    const auto firstFailed = std::ranges::find_if(outcome.writes, [](const KeptWrite& w) { return !w.IsWhole(); });
    const auto index = static_cast<size_t>(firstFailed - outcome.writes.begin());
    if (index < outcome.writesBeforeStop) {
        // Its own result, or that something was lost where a write behind it succeeded.
        EXPECT_TRUE(std::ranges::any_of(outcome.refusals, [&](HRESULT hr) {
            return hr == fault.Told() || hr == STG_E_WRITEFAULT || (hr == fault.result && hr != S_OK);
        })) << "no input refused a sample";
    }
}

// A run whose nth write fails, or all from it on; that everybody is told is seen to.
Outcome RunWith(FaultRig& failing, const WriteFault& fault, size_t n, bool once) {
    EXPECT_EQ(S_OK, failing.Build());
    failing.Stream().KeepWrites();
    failing.Stream().AnswerWrites(n, once, fault.result, fault.keptPercent);
    const Outcome outcome = failing.Run();
    ExpectTold(outcome, fault);
    return outcome;
}

TEST_P(StreamFaults, OfOneWriteCostOneClusterAtMost) {
    const auto& [fault, videoBytes, profile] = GetParam();
    const Recording recording{videoBytes, profile, {}};
    FaultRig rig(recording);
    const Outcome faultless = RunFaultless(rig);
    const FileJudge judge(rig, faultless);
    ASSERT_EQ(AllFrames(), judge.InFile(faultless.file));
    ASSERT_FALSE(faultless.IsTold());
    for (size_t n = 1; n <= faultless.writes.size(); ++n) {
        SCOPED_TRACE(n);
        const HangGuard guard(fault.name);
        FaultRig failing(recording);
        const Outcome outcome = RunWith(failing, fault, n, true);
        const JudgedRun run(judge, outcome);
        run.ExpectEnded();
        run.ExpectAllThatWasWritten(false);
        run.ExpectNoHalfClusters(false);
        EXPECT_EQ(LostAClustersBytes(outcome) ? 1u : 0u, run.LostClusters().size());
        judge.ExpectSound(outcome.file, false);
        ExpectWholeNextRun(failing, judge);
    }
}

TEST_P(StreamFaults, OfEveryWriteFromOneOnLeaveAllThatWasWrittenBefore) {
    const auto& [fault, videoBytes, profile] = GetParam();
    const Recording recording{videoBytes, profile, {}};
    FaultRig rig(recording);
    const Outcome faultless = RunFaultless(rig);
    const FileJudge judge(rig, faultless);
    for (size_t n = 1; n <= faultless.writes.size(); ++n) {
        SCOPED_TRACE(n);
        const HangGuard guard(fault.name);
        FaultRig failing(recording);
        const Outcome outcome = RunWith(failing, fault, n, false);
        const JudgedRun run(judge, outcome);
        run.ExpectEnded();
        // A patch of the head that is taken in part leaves it damaged, and no write can mend it; nor one that never
        // came.
        const bool isHeadDamaged = fault.keptPercent > 0 || FileJudge::IsOfHead(outcome, n - 1);
        run.ExpectAllThatWasWritten(isHeadDamaged);
        if (!isHeadDamaged) {
            run.ExpectNoHalfClusters(false);
            judge.ExpectSound(outcome.file, true);
        }
        ExpectWholeNextRun(failing, judge);
    }
}

// Of the frames' bytes and of the profile.
std::string NameOfRecording(size_t videoBytes, MuxProfile profile) {
    return std::string(videoBytes == kSmall ? "" : "_large_frames") +
           (profile == MuxProfile_Strict ? "_in_a_strict_file" : "");
}

std::string NameOf(const testing::TestParamInfo<std::tuple<WriteFault, size_t, MuxProfile>>& info) {
    return std::get<0>(info.param).name + NameOfRecording(std::get<1>(info.param), std::get<2>(info.param));
}

constexpr MuxProfile kProfiles[] = {MuxProfile_Compatible, MuxProfile_Strict};

INSTANTIATE_TEST_SUITE_P(Writes, StreamFaults,
                         testing::Combine(testing::ValuesIn(kWriteFaults), testing::Values(kSmall, kLarge),
                                          testing::ValuesIn(kProfiles)),
                         NameOf);

// ---- Calls that are refused, and take nothing ----------------------------------------------------------------------

struct RefusedCall {
    const char* name;
    StreamOperation operation;
    HRESULT result;
};

constexpr RefusedCall kRefusedCalls[] = {
    {"seek", StreamOperation::Seek, STG_E_SEEKERROR},
    {"seek_not_there", StreamOperation::Seek, E_NOTIMPL},
    {"stat", StreamOperation::Stat, E_FAIL},
    {"set_size", StreamOperation::SetSize, STG_E_MEDIUMFULL},
};

void PrintTo(const RefusedCall& call, std::ostream* stream) {
    *stream << call.name;
}

class RefusedCalls : public testing::TestWithParam<std::tuple<RefusedCall, size_t, bool, MuxProfile>> {};

// What a stream held before is cut off only where it tells its size; a stream that does not seek holds nothing.
TEST_P(RefusedCalls, LoseNothing) {
    const auto& [call, videoBytes, onlyOnce, profile] = GetParam();
    const Recording recording{videoBytes, profile, {}};
    const bool holdsMore = call.operation != StreamOperation::Seek;
    const auto prepare = [holdsMore, bytes = videoBytes](FaultRig& rig) {
        ASSERT_EQ(S_OK, rig.Build());
        rig.Stream().SetBytes(Bytes(holdsMore ? 2 * kFrames * bytes + 100000 : 0, 0xa5));
        rig.Stream().KeepWrites();
        rig.Stream().ClearCalls();
    };
    FaultRig rig(recording);
    prepare(rig);
    const Outcome faultless = rig.Run();
    const FileJudge judge(rig, faultless);
    const size_t calls = rig.Stream().Calls(call.operation).size();
    ASSERT_GT(calls, 0u);
    for (size_t n = 1; n <= calls; ++n) {
        SCOPED_TRACE(n);
        const HangGuard guard(call.name);
        FaultRig failing(recording);
        prepare(failing);
        if (onlyOnce) {
            failing.Stream().FailNth(call.operation, n, call.result);
        } else {
            failing.Stream().FailFrom(call.operation, n, call.result);
        }
        const Outcome outcome = failing.Run();
        const JudgedRun run(judge, outcome);
        run.ExpectEnded();
        EXPECT_FALSE(outcome.IsTold()) << "nothing is lost";
        EXPECT_EQ(AllFrames(), judge.TakenByOutput(outcome));
        EXPECT_EQ(AllFrames(), judge.InFile(outcome.file));
        // A seek is asked for once more, so that one refusal costs nothing; where all are refused, nothing is patched.
        const bool mayBeCut = !onlyOnce || call.operation != StreamOperation::Seek;
        judge.ExpectSound(outcome.file, mayBeCut);
        ExpectWholeNextRun(failing, judge);
    }
}

std::string NameOfCall(const testing::TestParamInfo<std::tuple<RefusedCall, size_t, bool, MuxProfile>>& info) {
    return std::string(std::get<0>(info.param).name) + (std::get<2>(info.param) ? "_once" : "_from_then_on") +
           NameOfRecording(std::get<1>(info.param), std::get<3>(info.param));
}

INSTANTIATE_TEST_SUITE_P(Calls, RefusedCalls,
                         testing::Combine(testing::ValuesIn(kRefusedCalls), testing::Values(kSmall, kLarge),
                                          testing::Bool(), testing::ValuesIn(kProfiles)),
                         NameOfCall);

} // namespace

} // namespace faults
