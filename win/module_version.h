// The module's version, as its own version resource states it.
#pragma once

#include <string>

namespace win {

// "Version 1.2.3.4" from the file version (major, minor, build, revision); empty when there is no such resource.
// Throws std::bad_alloc.
[[nodiscard]] std::string ModuleVersionText();

} // namespace win
