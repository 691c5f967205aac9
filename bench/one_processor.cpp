#include "bench/one_processor.h"

#include <stdexcept>

namespace bench {

OneProcessor::OneProcessor() {
    DWORD_PTR system = 0;
    if (GetProcessAffinityMask(GetCurrentProcess(), &m_before, &system) == FALSE) {
        throw std::runtime_error("GetProcessAffinityMask failed");
    }
    const DWORD_PTR lowest = m_before & (DWORD_PTR{0} - m_before);
    if (SetProcessAffinityMask(GetCurrentProcess(), lowest) == FALSE) {
        throw std::runtime_error("SetProcessAffinityMask failed");
    }
}

OneProcessor::~OneProcessor() {
    SetProcessAffinityMask(GetCurrentProcess(), m_before);
}

} // namespace bench
