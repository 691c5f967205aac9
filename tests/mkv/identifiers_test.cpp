// The unique identifiers of a file.
#include "mkv/identifiers.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

using mkv::CIdentifiers;

constexpr int kCount = 1000;

std::vector<UINT64> Sequence(UINT64 seed) {
    CIdentifiers identifiers(seed);
    std::vector<UINT64> values;
    for (int i = 0; i < kCount; ++i) {
        values.push_back(identifiers.next());
    }
    return values;
}

TEST(Identifiers, ASeedGivesTheSameSequenceEachTime) {
    EXPECT_EQ(Sequence(7), Sequence(7));
    EXPECT_EQ(CIdentifiers(7).nextUuid(), CIdentifiers(7).nextUuid());
}

TEST(Identifiers, OtherSeedsGiveOtherSequences) {
    EXPECT_NE(Sequence(7), Sequence(8));
    EXPECT_NE(Sequence(7), Sequence(UINT64{7} << 32)); // both halves count
    EXPECT_NE(CIdentifiers(7).nextUuid(), CIdentifiers(8).nextUuid());
}

TEST(Identifiers, ASeededSequenceIsTheSameOnEverySystem) {
    EXPECT_EQ(CIdentifiers(5489).next(), 14514284786278117030u); // the first number of the generator's standard
}

TEST(Identifiers, WithoutASeedNoTwoSequencesAreAlike) {
    EXPECT_NE(Sequence(0), Sequence(0));
    EXPECT_NE(CIdentifiers(0).nextUuid(), CIdentifiers(0).nextUuid());
}

TEST(Identifiers, NoneIsZeroAndNoTwoAreAlike) {
    for (const UINT64 seed : {0, 7}) {
        const auto values = Sequence(seed);
        const std::set<UINT64> different(values.begin(), values.end());
        EXPECT_EQ(different.size(), values.size()) << seed;
        EXPECT_EQ(different.count(0), 0u) << seed;
    }
}

TEST(Identifiers, AllSixtyFourBitsAreUsed) {
    for (const UINT64 seed : {0, 7}) {
        UINT64 ones = 0;
        UINT64 zeros = 0;
        for (const UINT64 value : Sequence(seed)) {
            ones |= value;
            zeros |= ~value;
        }
        EXPECT_EQ(ones, ~UINT64{0}) << seed;
        EXPECT_EQ(zeros, ~UINT64{0}) << seed;
    }
}

TEST(Identifiers, WhatIsGivenIsKeptUnlessItIsZeroOrGivenAlready) {
    for (const UINT64 seed : {0, 7}) {
        CIdentifiers identifiers(seed);
        EXPECT_EQ(identifiers.nextOr(42), 42u);
        const UINT64 second = identifiers.nextOr(42);
        EXPECT_NE(second, 42u);
        EXPECT_NE(identifiers.nextOr(0), 0u);
        EXPECT_NE(identifiers.nextOr(second), second); // drawn counts as given, too
        EXPECT_EQ(identifiers.nextOr(43), 43u);
    }
}

TEST(Identifiers, ADrawnNumberIsNeverOneThatWasGiven) {
    const UINT64 first = CIdentifiers(7).next();
    CIdentifiers identifiers(7);
    EXPECT_EQ(identifiers.nextOr(first), first);
    EXPECT_EQ(identifiers.next(), Sequence(7)[1]);
}

TEST(Identifiers, AUuidHasNoByteThatStaysTheSame) {
    for (const UINT64 seed : {0, 7}) {
        CIdentifiers identifiers(seed);
        const auto first = identifiers.nextUuid();
        std::vector<bool> changed(first.size());
        for (int i = 0; i < kCount; ++i) {
            const auto uuid = identifiers.nextUuid();
            for (size_t byte = 0; byte < first.size(); ++byte) {
                changed[byte] = changed[byte] || uuid[byte] != first[byte];
            }
        }
        EXPECT_EQ(changed, std::vector<bool>(first.size(), true)) << seed;
    }
}

} // namespace
