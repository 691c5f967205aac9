// The task allocator, on malloc: the sanitizer sees every block by itself.
#include "tests/native/memory.h"

#include <cstdlib>
#include <limits>
#include <mutex>

#include "tests/native/native_hooks.h"

namespace {

std::mutex g_failureMutex;
int g_untilFailure = 0; // 0: no failure is asked for
bool g_failForever = false;

} // namespace

namespace native {

ScopedAllocationFailure::ScopedAllocationFailure(int nth, bool forever) {
    const std::lock_guard lock(g_failureMutex);
    g_untilFailure = nth;
    g_failForever = forever;
}

ScopedAllocationFailure::~ScopedAllocationFailure() {
    const std::lock_guard lock(g_failureMutex);
    g_untilFailure = 0;
    g_failForever = false;
}

bool NextAllocationFails() {
    const std::lock_guard lock(g_failureMutex);
    if (g_untilFailure == 0 || --g_untilFailure > 0) {
        return false;
    }
    g_untilFailure = g_failForever ? 1 : 0;
    return true;
}

bool HasMemoryForObject() {
    void* const volatile probe = std::malloc(1); // fails in a program that lets malloc fail
    std::free(probe);
    return probe != nullptr;
}

} // namespace native

void* WINAPI CoTaskMemAlloc(SIZE_T size) {
    // Above half the address space there is no memory; the sanitizer would end the program over such a size.
    constexpr SIZE_T kLargest = std::numeric_limits<SIZE_T>::max() / 2;
    return size > kLargest || native::NextAllocationFails() ? nullptr : std::malloc(size);
}

void* WINAPI CoTaskMemRealloc(void* block, SIZE_T size) {
    if (block == nullptr) {
        return CoTaskMemAlloc(size);
    }
    if (size == 0) {
        std::free(block);
        return nullptr;
    }
    return native::NextAllocationFails() ? nullptr : std::realloc(block, size);
}

void WINAPI CoTaskMemFree(void* block) {
    std::free(block);
}
