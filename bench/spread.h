// Spread: what several rounds of one measurement came to.
#pragma once

#include <vector>

namespace bench {

struct Spread {
    double min = 0.0;
    double median = 0.0;
    double max = 0.0;
};

// All zero for no values.
[[nodiscard]] Spread SpreadOf(std::vector<double> values);

} // namespace bench
