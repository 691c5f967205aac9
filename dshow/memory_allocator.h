// The system's memory allocator, which pins fall back on.
#pragma once

#include "win/platform.h"

HRESULT CreateMemoryAllocator(IMemAllocator** ppAllocator) noexcept;
