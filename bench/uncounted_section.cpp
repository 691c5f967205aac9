#include "bench/uncounted_section.h"

#include <cstdint>

#include "win/platform.h"

namespace bench {

namespace {

#ifdef QRX_NATIVE

std::intptr_t& Depth() {
    static thread_local std::intptr_t depth = 0;
    return depth;
}

void SetDepth(std::intptr_t depth) {
    Depth() = depth;
}

#else

// A slot of the system's own: thread_local variables would take locks of the compiler's runtime.
DWORD Slot() {
    static const DWORD slot = TlsAlloc();
    return slot;
}

std::intptr_t Depth() {
    return reinterpret_cast<std::intptr_t>(TlsGetValue(Slot()));
}

void SetDepth(std::intptr_t depth) {
    TlsSetValue(Slot(), reinterpret_cast<void*>(depth));
}

#endif

} // namespace

UncountedSection::UncountedSection() {
    SetDepth(Depth() + 1);
}

UncountedSection::~UncountedSection() {
    SetDepth(Depth() - 1);
}

bool UncountedSection::IsInside() {
    return Depth() > 0;
}

} // namespace bench
