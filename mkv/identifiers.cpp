#include "mkv/identifiers.h"

namespace mkv {

namespace {

constexpr int kBitsPerDraw = 32;
constexpr int kBitsPerByte = 8;

} // namespace

CIdentifiers::CIdentifiers(UINT64 seed) : m_isSeeded(seed != 0), m_seeded(seed) {}

UINT64 CIdentifiers::draw() {
    if (m_isSeeded) {
        return m_seeded();
    }
    if (!m_system) {
        m_system.emplace();
    }
    const UINT64 high = (*m_system)();
    return high << kBitsPerDraw | (*m_system)();
}

UINT64 CIdentifiers::next() {
    UINT64 drawn = draw();
    while (drawn == 0 || !m_given.insert(drawn).second) {
        drawn = draw();
    }
    return drawn;
}

UINT64 CIdentifiers::nextOr(UINT64 wanted) {
    return wanted != 0 && m_given.insert(wanted).second ? wanted : next();
}

CIdentifiers::Uuid CIdentifiers::nextUuid() {
    Uuid uuid{};
    size_t i = 0;
    for (const UINT64 half : {next(), next()}) {
        for (int shift = 0; shift < kBitsPerDraw * 2; shift += kBitsPerByte) {
            uuid[i++] = static_cast<BYTE>(half >> shift);
        }
    }
    return uuid;
}

} // namespace mkv
