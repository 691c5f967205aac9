// Finding a filter's pins as an application does.
#pragma once

#include <vector>

#include "win/com_ptr.h"
#include "win/platform.h"
#include "win/wide_string.h"

namespace test_support {

// All pins in the order of EnumPins.
[[nodiscard]] std::vector<win::ComPtr<IPin>> PinsOf(IBaseFilter* filter);
// The pin with that name, or none.
[[nodiscard]] win::ComPtr<IPin> PinNamed(IBaseFilter* filter, WideStringView name);
[[nodiscard]] WideString NameOf(IPin* pin);

} // namespace test_support
