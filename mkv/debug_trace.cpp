#include "mkv/debug_trace.h"

#include <atomic>

namespace mkv {

namespace {

std::atomic<DebugTraceHook> g_hook{nullptr};

} // namespace

void SetDebugTraceHook(DebugTraceHook hook) noexcept {
    g_hook.store(hook, std::memory_order_release);
}

bool IsDebugTraceOn() noexcept {
    return g_hook.load(std::memory_order_acquire) != nullptr;
}

void DebugTrace(const char* text) {
    if (const DebugTraceHook hook = g_hook.load(std::memory_order_acquire)) {
        hook(text);
    }
}

} // namespace mkv
