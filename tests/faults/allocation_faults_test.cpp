// Memory that runs out at every allocation of a run, one after the other: from the creation of the filter to its end.
// The run ends, nobody is left in the dark, nothing leaks, and the file holds all that the output took.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

#include "log/logger.h"
#include "tests/faults/allocation_faults.h"
#include "tests/faults/file_judge.h"
#include "tests/faults/hang_guard.h"
#include "tests/log/log_directory.h"

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
#endif

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>

extern "C" const char* __lsan_default_options() {
    return "print_suppressions=0";
}

// What the libraries lose when they run out of memory in a constructor is theirs.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libebml.so\nleak:libmatroska.so\n";
}
#endif

using namespace test_support;

namespace faults {

namespace {

// What the system counts: it must be the same again after each run.
struct Held {
    size_t handles = 0;
    size_t badHandles = 0;
    size_t locks = 0;
    bool operator==(const Held&) const = default;
};

Held HeldNow() {
#ifdef QRX_NATIVE
    return {native::OpenHandleCount(), native::BadHandleCount(), native::LiveCriticalSectionCount()};
#else
    return {};
#endif
}

// The libraries' leaks do not count, which only the leak checker tells apart; it is asked when blocks are missing.
void ExpectNoLeak(size_t blocksBefore) {
#ifdef __SANITIZE_ADDRESS__
    if (LiveBlocks() != blocksBefore) {
        EXPECT_EQ(0, __lsan_do_recoverable_leak_check());
    }
#else
    (void)blocksBefore;
#endif
}

struct Result {
    HRESULT build = S_OK;
    Outcome outcome;
    bool hasStruck = false;
};

struct Scenario {
    const char* name;
    size_t videoBytes;
    bool logs;
    MuxProfile profile;
    bool isAnnotated = false;
};

constexpr Scenario kScenarios[] = {{"Small", kSmall, false, MuxProfile_Compatible},
                                   {"LargeAndLogged", kLarge, true, MuxProfile_Compatible},
                                   {"SmallStrict", kSmall, false, MuxProfile_Strict},
                                   {"SmallAnnotatedStrict", kSmall, false, MuxProfile_Strict, true},
                                   {"LargeAndLoggedStrict", kLarge, true, MuxProfile_Strict}};

void PrintTo(const Scenario& scenario, std::ostream* stream) {
    *stream << scenario.name;
}

class AllocationFaults : public testing::TestWithParam<Scenario> {
  protected:
    ~AllocationFaults() override { g_Logger.SetEnabled(false); }

    [[nodiscard]] Recording What() const {
        return {GetParam().videoBytes, GetParam().profile, GetParam().logs ? m_logs.Path() : WideString(),
                GetParam().isAnnotated};
    }

    Result RunWithFault(size_t n) {
        FaultRig rig(What());
        rig.Stream().KeepWrites();
        Result result;
        const AllocationFault fault(n);
        result.build = rig.Build();
        if (SUCCEEDED(result.build)) {
            result.outcome = rig.Run();
        }
        result.hasStruck = fault.HasStruck();
        return result;
    }

    const LogDirectory m_logs;
};

bool IsOneOf(const Frames& frames, const Frames& all) {
    return std::ranges::includes(all, frames);
}

// Nothing is lost in silence: what the filter took is in the file, or somebody heard that it is not.
void ExpectHonest(const Result& result, const FileJudge& judge) {
    if (FAILED(result.build) || FAILED(result.outcome.pause)) {
        return; // the application was told
    }
    const Frames inFile = judge.InFile(result.outcome.file);
    const Frames taken = FileJudge::TakenByFilter(result.outcome);
    EXPECT_EQ(S_OK, result.outcome.stop);
    EXPECT_TRUE(IsOneOf(judge.TakenByOutput(result.outcome), inFile)) << "a cluster is lost that the output took";
    EXPECT_TRUE(IsOneOf(inFile, taken));
    if (!result.outcome.IsTold()) {
        EXPECT_EQ(taken, inFile) << "lost without a word";
    }
    judge.ExpectSound(result.outcome.file, result.outcome.IsTold());
}

TEST_P(AllocationFaults, EndTheRunInOrderTellOfItAndKeepWhatWasWritten) {
    const Result faultless = RunWithFault(0);
    ASSERT_EQ(S_OK, faultless.build);
    const FaultRig payloads(What());
    const FileJudge judge(payloads, faultless.outcome);
    size_t strikes = 0;
    for (size_t n = 1;; ++n) {
        SCOPED_TRACE(n);
        const HangGuard guard("allocation " + std::to_string(n));
        const Held held = HeldNow();
        const size_t blocks = LiveBlocks();
        {
            const Result result = RunWithFault(n);
            if (!result.hasStruck) {
                break;
            }
            ++strikes;
            ExpectHonest(result, judge);
        }
        EXPECT_EQ(held, HeldNow());
        ExpectNoLeak(blocks);
    }
    EXPECT_GT(strikes, 100u) << "the product's allocations are not counted";
    std::printf("%zu allocations failed\n", strikes);
}

INSTANTIATE_TEST_SUITE_P(Frames, AllocationFaults, testing::ValuesIn(kScenarios),
                         [](const testing::TestParamInfo<Scenario>& scenario) { return scenario.param.name; });

} // namespace

} // namespace faults
