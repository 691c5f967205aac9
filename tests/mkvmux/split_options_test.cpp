// What "--split" understands, and what its files are called.
#include "mkvmux/split_options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mkvmux/failure.h"

namespace mkvmux {
namespace {

using Kind = SplitOptions::Kind;
constexpr INT64 kSecond = 10'000'000;

TEST(SplitOptionsTest, NothingIsAskedFor) {
    EXPECT_FALSE(ReadSplit("").IsOn());
}

TEST(SplitOptionsTest, Durations) {
    const std::vector<std::pair<std::string, INT64>> cases{
        {"duration:00:10:00", 600 * kSecond},    {"duration:1:02:03.5", 3723 * kSecond + kSecond / 2},
        {"duration:10:00", 600 * kSecond},       {"duration:90s", 90 * kSecond},
        {"duration:1500ms", kSecond * 3 / 2},    {"duration:2h", 7200 * kSecond},
        {"00:00:01.000000100", kSecond + 1},     {"120s", 120 * kSecond},
        {"duration:100:00:00", 360000 * kSecond}};
    for (const auto& [text, units] : cases) {
        SCOPED_TRACE(text);
        const SplitOptions split = ReadSplit(text);
        EXPECT_EQ(Kind::Duration, split.kind);
        EXPECT_EQ(units, split.duration);
    }
}

TEST(SplitOptionsTest, Sizes) {
    const std::vector<std::pair<std::string, UINT64>> cases{{"size:700M", 700 << 20},
                                                            {"size:1k", 1024},
                                                            {"2G", UINT64{2} << 30},
                                                            {"size:1000000", 1000000},
                                                            {"5000", 5000}};
    for (const auto& [text, bytes] : cases) {
        SCOPED_TRACE(text);
        const SplitOptions split = ReadSplit(text);
        EXPECT_EQ(Kind::Size, split.kind);
        EXPECT_EQ(bytes, split.bytes);
    }
}

TEST(SplitOptionsTest, Timestamps) {
    const SplitOptions split = ReadSplit("timestamps:00:01:00,90s,00:02:00.25");
    EXPECT_EQ(Kind::Timestamps, split.kind);
    EXPECT_EQ((std::vector<INT64>{60 * kSecond, 90 * kSecond, 120 * kSecond + kSecond / 4}), split.times);
}

TEST(SplitOptionsTest, WhatCannotBeUnderstoodIsNamed) {
    for (const char* const text : {"duration:",
                                   "duration:abc",
                                   "duration:0s",
                                   "duration:00:60:00",
                                   "duration:00:00:61",
                                   "duration:1:2:3:4",
                                   "duration:00:00:01.",
                                   "duration:00:00:01.1234567890",
                                   "duration:99999999999999999999s",
                                   "duration:12",
                                   "duration:99999999999999h",
                                   "size:",
                                   "size:0",
                                   "size:12X",
                                   "size:-1",
                                   "size:99999999999G",
                                   "timestamps:",
                                   "timestamps:10s,",
                                   "timestamps:10s,10s",
                                   "timestamps:20s,10s",
                                   "parts:00:00:01-00:00:02",
                                   "chapters:all",
                                   "x",
                                   "12q"}) {
        SCOPED_TRACE(text);
        try {
            (void)ReadSplit(text);
            ADD_FAILURE() << "was understood";
        } catch (const Failure& failure) {
            EXPECT_EQ(0u, std::string(failure.what()).rfind("--split: '", 0)) << failure.what();
        }
    }
}

TEST(SplitOptionsTest, NamesOfTheParts) {
    EXPECT_EQ(L"out-001.mkv", PartName(L"out.mkv", 1));
    EXPECT_EQ(L"out-1000.mkv", PartName(L"out.mkv", 1000));
    EXPECT_EQ(L"a.b/out-002", PartName(L"a.b/out", 2));
    EXPECT_EQ(L"C:\\x.y\\out.tar-003.mkv", PartName(L"C:\\x.y\\out.tar.mkv", 3));
    EXPECT_EQ(L"part 7 of it.mkv", PartName(L"part %d of it.mkv", 7));
    EXPECT_EQ(L"0007.mkv", PartName(L"%04d.mkv", 7));
    EXPECT_EQ(L"100%-007.mkv", PartName(L"100%.mkv", 7));
    EXPECT_EQ(L"%d/out-007.mkv", PartName(L"%d/out.mkv", 7)) << "a folder is no pattern";
    EXPECT_EQ(L"%9999999999d-007.mkv", PartName(L"%9999999999d.mkv", 7));
}

} // namespace
} // namespace mkvmux
