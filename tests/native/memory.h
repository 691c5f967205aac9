// Whether the next allocation of the OLE allocators is to fail (native_hooks.h lets a test say so).
#pragma once

namespace native {

[[nodiscard]] bool NextAllocationFails();

} // namespace native
