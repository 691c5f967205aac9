// What becomes of the next allocation of the system (native_hooks.h lets a test say so).
#pragma once

namespace native {

// Of the OLE allocators.
[[nodiscard]] bool NextAllocationFails();

// Whether the system finds the little memory that a new object takes. It is asked once for each; what the object's
// making allocates here is no allocation of the product.
[[nodiscard]] bool HasMemoryForObject();

} // namespace native
