// Writes small H.264 and H.265 byte streams: parameter sets and slices whose heads are real and whose data is not.
#pragma once

#include <optional>
#include <vector>

#include "tests/codecs/bit_writer.h"
#include "tests/codecs/video_signal_writer.h"

namespace test_annexb {

using Bytes = std::vector<uint8_t>;

// Start code (three or four bytes), header, payload with emulation prevention.
[[nodiscard]] Bytes Unit(const Bytes& header, const mkv_test::BitWriter& payload, size_t startCodeBytes = 4);
[[nodiscard]] Bytes Joined(std::initializer_list<Bytes> parts);

struct AvcSpsShape {
    uint32_t pocType = 0;
    std::vector<int> cycle{}; // offsets for reference frames, type 1
    int offsetForNonRefPic = 0;
    bool frameMbsOnly = true;
    std::optional<mkv_test::SignalShape> signal{}; // in a VUI, behind an aspect ratio of 12 by 11
    uint32_t mapUnits = 0;                         // rows of macroblocks of a frame or field; 0: those of 240 lines
};

[[nodiscard]] Bytes WriteAvcSps(const AvcSpsShape& shape = {}); // 320x240, frame numbers and orders of four bits
[[nodiscard]] Bytes WriteAvcPps();                              // without anything special
[[nodiscard]] Bytes WriteAvcDelimiter();
// A recovery point message that says so many frames.
[[nodiscard]] Bytes WriteAvcRecoveryPoint(uint32_t frames);

struct AvcSliceShape {
    bool isIdr = false;
    bool isReference = true;
    uint32_t firstMb = 0;
    uint32_t type = 7; // I; 5 P, 6 B
    uint32_t frameNum = 0;
    uint32_t pocLsb = 0;
    std::optional<bool> bottomField{}; // only with a shape that allows fields
    bool forgetsAll = false;           // memory management control operation 5
};

[[nodiscard]] Bytes WriteAvcSlice(const AvcSliceShape& slice, const AvcSpsShape& sps = {});

[[nodiscard]] Bytes WriteHevcUnit(uint8_t type, const mkv_test::BitWriter& payload, uint8_t temporalId = 0);
// VPS, SPS (320x240, orders of eight bits) and PPS.
[[nodiscard]] Bytes WriteHevcParameterSets();
// A picture of one slice segment.
[[nodiscard]] Bytes WriteHevcSlice(uint8_t type, uint32_t pocLsb, uint8_t temporalId = 0);

} // namespace test_annexb
