// DescribeAsJson: all that the layout reader found, for the programs that compare it with other readers.
#pragma once

#include <string>
#include <vector>

#include "tests/support/matroska_layout.h"

namespace test_support {

// Positions are offsets from the file's start; times are nanoseconds, in members that say so.
[[nodiscard]] std::string DescribeAsJson(const MatroskaLayout& layout, const std::vector<std::string>& findings);

} // namespace test_support
