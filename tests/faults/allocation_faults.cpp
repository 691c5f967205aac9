#include "tests/faults/allocation_faults.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/support/system_code.h"

#ifdef QRX_NATIVE
extern "C" void* __real_malloc(size_t size);
#else
#define __real_malloc std::malloc
#endif

namespace faults {

namespace {

std::atomic<bool> g_isCounting{false};
std::atomic<size_t> g_count{0};
std::atomic<size_t> g_failAt{0};
std::atomic<size_t> g_liveBlocks{0};

bool Fails() {
    return g_isCounting && !test_support::SystemCode::IsRunning() && ++g_count == g_failAt;
}

// Null when it fails.
void* Allocate(size_t size) {
    void* const block = Fails() ? nullptr : __real_malloc(size == 0 ? 1 : size);
    g_liveBlocks += block == nullptr ? 0 : 1;
    return block;
}

void Free(void* block) {
    g_liveBlocks -= block == nullptr ? 0 : 1;
    std::free(block);
}

} // namespace

AllocationFault::AllocationFault(size_t n) : m_n(n) {
    g_count = 0;
    g_failAt = n;
    g_isCounting = true;
}

AllocationFault::~AllocationFault() {
    g_isCounting = false;
}

size_t AllocationFault::Count() {
    return g_count;
}

size_t LiveBlocks() {
    return g_liveBlocks;
}

} // namespace faults

#ifdef QRX_NATIVE
extern "C" void* __wrap_malloc(size_t size) {
    return faults::Fails() ? nullptr : __real_malloc(size);
}
#endif

// All forms, since the sanitizer has each of its own.
void* operator new(size_t size) {
    void* const block = faults::Allocate(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new[](size_t size) {
    return operator new(size);
}

void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return faults::Allocate(size);
}

void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return faults::Allocate(size);
}

void operator delete(void* block) noexcept {
    faults::Free(block);
}

void operator delete[](void* block) noexcept {
    faults::Free(block);
}

void operator delete(void* block, size_t) noexcept {
    faults::Free(block);
}

void operator delete[](void* block, size_t) noexcept {
    faults::Free(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept {
    faults::Free(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept {
    faults::Free(block);
}
