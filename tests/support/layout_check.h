// CheckLayout: what is wrong with a Matroska file, as far as its layout goes.
//
// Units: bytes from the file's start; ticks of the timestamp scale. Errors: one finding a line; none: all is well.
#pragma once

#include <string>
#include <vector>

#include "tests/support/matroska_layout.h"

namespace test_support {

struct LayoutExpectations {
    // A recording that was cut off: the segment's size is open, the last element may be cut, the head is not patched.
    bool cut = false;
    // Files that put a late block into a cluster of its own go back in time there.
    bool clustersMayGoBack = false;
    // The strict profile: the head's order, clusters that begin with their earliest block, cues that are exact.
    bool strict = false;
};

[[nodiscard]] std::vector<std::string> CheckLayout(const MatroskaLayout& layout,
                                                   const LayoutExpectations& expected = {});
// Reads and checks.
[[nodiscard]] std::vector<std::string> CheckLayout(ByteView file, const LayoutExpectations& expected = {});

} // namespace test_support
