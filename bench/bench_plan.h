// BenchPlan: how much is measured; more takes longer and scatters less.
#pragma once

#include "win/platform.h"

namespace bench {

struct BenchPlan {
    int rounds;
    UINT64 smallPackets; // a run, all inputs together
    UINT64 largePackets;
    UINT64 filePackets; // large ones, of the runs into a real file
    UINT64 uncontendedPackets;
    UINT64 pingPongPackets;
    UINT64 shortRunPackets; // large ones, of the two runs whose memory is compared
    UINT64 longRunPackets;
    DWORD starvedMs;
};

inline constexpr BenchPlan kFullPlan{
    .rounds = 7,
    .smallPackets = 200000,
    .largePackets = 4000,
    .filePackets = 2000,
    .uncontendedPackets = 10000,
    .pingPongPackets = 200,
    .shortRunPackets = 8000, // 0.5 GB
    .longRunPackets = 64000, // 4.2 GB
    .starvedMs = 10000,
};

inline constexpr BenchPlan kQuickPlan{
    .rounds = 3,
    .smallPackets = 80000,
    .largePackets = 1600,
    .filePackets = 800,
    .uncontendedPackets = 10000,
    .pingPongPackets = 50,
    .shortRunPackets = 8000,
    .longRunPackets = 20000,
    .starvedMs = 2500,
};

} // namespace bench
