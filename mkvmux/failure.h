// Failure: why the tool cannot go on, as the one line that standard error gets. UTF-8, without a final full stop.
#pragma once

#include <stdexcept>

namespace mkvmux {

class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

} // namespace mkvmux
