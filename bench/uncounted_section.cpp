#include "bench/uncounted_section.h"

#include <cstdint>

#include "win/platform.h"

namespace bench {

namespace {

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
