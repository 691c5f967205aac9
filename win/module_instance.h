// The module whose resources and file name we speak of: the .ax once its entry point has run, the program
// itself before (tests, tools).
//
// Threads: set once on process attach, read by any thread afterwards.
#pragma once

#include "win/platform.h"

namespace win {

void SetModuleInstance(HINSTANCE instance);
[[nodiscard]] HINSTANCE ModuleInstance();

} // namespace win
