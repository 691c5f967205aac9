// What a survey finds in a file, as plain values of bounded size. Texts are UTF-8 as the file has them.
//
// Units: bytes from the file's start, ticks of the file.
#pragma once

#include <limits>
#include <string>
#include <vector>

#include "report/timeline.h"
#include "win/platform.h"

namespace report {

// Three decades of milliseconds; a time beyond it comes from damage.
inline constexpr UINT64 kMaxTicks = UINT64{1} << 40;

// An element with what it holds. Of those with one name in one parent only the first are kept.
struct Node {
    std::string name;
    std::string value; // shown as it is; empty: none
    UINT64 start = 0;
    UINT64 size = 0; // with its head
    UINT64 more = 0; // not 0: this stands for so many elements that are not kept, and for their bytes together
    bool isWhole = true;
    std::vector<Node> children;
};

struct Gap {
    UINT64 from = 0;
    UINT64 to = 0;
};

struct TrackReport {
    UINT64 number = 0;
    UINT64 type = 0; // Matroska's; 0: it was not declared
    std::string codecId;
    std::string name;
    std::string language;
    std::string format; // "1920 x 1080", "48000 Hz, 2 channels"
    size_t row = 0;     // of the timeline
    UINT64 blocks = 0;
    UINT64 keyframes = 0;
    UINT64 bytes = 0;
    UINT64 begin = 0;
    UINT64 end = 0;
    UINT64 lag = 0;        // the most that a block stands behind other tracks' in the file
    std::vector<Gap> gaps; // the first ones
    UINT64 gapCount = 0;
};

// Bytes that no reader can make anything of.
struct Damage {
    UINT64 from = 0;
    UINT64 to = 0;
    std::string what;
};

// A piece of the file, for the map of its bytes.
struct Piece {
    std::string name;
    UINT64 start = 0;
    UINT64 end = 0;
    UINT64 count = 1; // clusters that lie one behind the other are one piece
};

struct FileFacts {
    UINT64 bytes = 0;
    UINT64 scaleNs = 1'000'000;
    double durationTicks = 0; // as the file says it; 0: not said
    std::string docType;
    std::string title;
    std::string muxingApp;
    std::string writingApp;
    std::vector<TrackReport> tracks;
    Timeline timeline; // row 0: of the file itself
    UINT64 clusters = 0;
    UINT64 largestCluster = 0; // bytes
    UINT64 cuePoints = 0;
    UINT64 lostCuePoints = 0;    // that lead to no cluster
    std::vector<Damage> damages; // the first ones
    UINT64 damageCount = 0;
    std::vector<Piece> pieces;
    std::vector<Node> tree;
};

// At most what 64 bits hold: a damaged file may say anything.
[[nodiscard]] inline UINT64 NsOf(const FileFacts& facts, UINT64 ticks) {
    constexpr UINT64 kMost = std::numeric_limits<UINT64>::max();
    return ticks <= kMost / facts.scaleNs ? ticks * facts.scaleNs : kMost;
}

} // namespace report
