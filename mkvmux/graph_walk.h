// What the pins of a filter are and what they offer, as values.
//
// Errors: a filter or pin that cannot say gives an empty list.
#pragma once

#include <string>
#include <vector>

#include "dshow/media_type.h"
#include "win/com_ptr.h"
#include "win/platform.h"

namespace mkvmux {

[[nodiscard]] std::vector<win::ComPtr<IPin>> PinsOf(IBaseFilter* filter, PIN_DIRECTION direction);
[[nodiscard]] std::vector<CMediaType> TypesOf(IPin* pin);
[[nodiscard]] bool IsConnected(IPin* pin);
[[nodiscard]] std::wstring NameOf(IPin* pin);
// The filter's first pin of this direction that is still free, or none.
[[nodiscard]] win::ComPtr<IPin> FreePinOf(IBaseFilter* filter, PIN_DIRECTION direction);

} // namespace mkvmux
