// The enumerators that fake filters and pins hand out. Each is an object of its own, deleted by its last Release;
// it holds a reference on the pin it came from.
#pragma once

#include <vector>

#include "tests/support/media_type_value.h"
#include "win/platform.h"

namespace test_support {

// Of one pin; the caller gets the one reference.
[[nodiscard]] IEnumPins* MakePinEnumerator(IPin* pin);
[[nodiscard]] IEnumMediaTypes* MakeMediaTypeEnumerator(IPin* pin, std::vector<MediaTypeValue> types);

} // namespace test_support
