#include "dshow/memory_allocator.h"

HRESULT CreateMemoryAllocator(IMemAllocator** ppAllocator) noexcept {
    if (ppAllocator == nullptr) {
        return E_POINTER;
    }
    *ppAllocator = nullptr;
    return CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator,
                            reinterpret_cast<void**>(ppAllocator));
}
