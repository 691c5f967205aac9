// Why a file is not repaired; it is left as it was. UTF-8, without a final full stop.
#pragma once

#include <stdexcept>

namespace repair {

// Behind a reason that is no reason to give up.
inline constexpr const char* kAdvice = "; writing it anew may help: mkvmux -o NEW.mkv FILE";

class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

} // namespace repair
