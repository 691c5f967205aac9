#include "bench/spread.h"

#include <algorithm>

namespace bench {

Spread SpreadOf(std::vector<double> values) {
    if (values.empty()) {
        return {};
    }
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    const bool odd = values.size() % 2 == 1;
    const double median = odd ? values[middle] : (values[middle - 1] + values[middle]) / 2;
    return {values.front(), median, values.back()};
}

} // namespace bench
