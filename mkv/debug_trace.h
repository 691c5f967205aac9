// The writer's debug trace: short texts about what it does, for a debugger or a test. Without a hook, the default,
// nothing is written and nothing is formatted.
#pragma once

namespace mkv {

using DebugTraceHook = void (*)(const char* text);

// Null takes the hook away. Threads: any.
void SetDebugTraceHook(DebugTraceHook hook) noexcept;
[[nodiscard]] bool IsDebugTraceOn() noexcept;
void DebugTrace(const char* text);

} // namespace mkv
