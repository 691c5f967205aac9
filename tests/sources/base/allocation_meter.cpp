#include "tests/sources/base/allocation_meter.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> g_held{0};
std::atomic<size_t> g_peak{0};

size_t SizeOf(void* block) {
#ifdef _WIN32
    return _msize(block);
#else
    return malloc_usable_size(block);
#endif
}

void* Take(size_t bytes) noexcept {
    void* const block = std::malloc(std::max<size_t>(bytes, 1));
    if (block != nullptr) {
        const size_t held = g_held += SizeOf(block);
        size_t peak = g_peak;
        while (held > peak && !g_peak.compare_exchange_weak(peak, held)) {
        }
    }
    return block;
}

void Give(void* block) noexcept {
    if (block != nullptr) {
        g_held -= SizeOf(block);
        std::free(block);
    }
}

} // namespace

void* operator new(size_t bytes) {
    void* const block = Take(bytes);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new(size_t bytes, const std::nothrow_t&) noexcept {
    return Take(bytes);
}

void operator delete(void* block) noexcept {
    Give(block);
}

void operator delete(void* block, size_t) noexcept {
    Give(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept {
    Give(block);
}

void* operator new[](size_t bytes) {
    return operator new(bytes);
}

void* operator new[](size_t bytes, const std::nothrow_t&) noexcept {
    return Take(bytes);
}

void operator delete[](void* block) noexcept {
    Give(block);
}

void operator delete[](void* block, size_t) noexcept {
    Give(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept {
    Give(block);
}

namespace test_source {

AllocationMeter::AllocationMeter() : m_heldBefore(g_held) {
    g_peak = m_heldBefore;
}

size_t AllocationMeter::PeakBytes() const {
    return g_peak - m_heldBefore;
}

} // namespace test_source
