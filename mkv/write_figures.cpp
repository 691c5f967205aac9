#include "mkv/write_figures.h"

#include <algorithm>

namespace mkv {

namespace {

// Who reads looks again when something changed meanwhile. Writes are far apart: this many times in a row is no chance.
constexpr int kMostTries = 1000;

constexpr auto kRelease = std::memory_order_release;
constexpr auto kAcquire = std::memory_order_acquire;

// Of which there is one thread.
template <typename Number>
void Add(std::atomic<Number>& number, Number more) {
    number.store(number.load(std::memory_order_relaxed) + more, kRelease);
}

} // namespace

void CWriteFigures::reset() {
    Add(m_changes, UINT64{1});
    m_bytes.store(0, kRelease);
    m_writes.store(0, kRelease);
    m_time.store(0, kRelease);
    m_longest.store(0, kRelease);
    m_isWriting.store(false, kRelease);
    Add(m_changes, UINT64{1});
}

void CWriteFigures::begin() {
    const INT64 now = m_clock();
    Add(m_changes, UINT64{1});
    Add(m_writes, UINT64{1});
    m_begin.store(now, kRelease);
    m_isWriting.store(true, kRelease);
    Add(m_changes, UINT64{1});
}

INT64 CWriteFigures::end(UINT64 bytes) {
    const INT64 took = std::max<INT64>(m_clock() - m_begin.load(std::memory_order_relaxed), 0);
    Add(m_changes, UINT64{1});
    Add(m_bytes, bytes);
    Add(m_time, took);
    m_longest.store(std::max(m_longest.load(std::memory_order_relaxed), took), kRelease);
    m_isWriting.store(false, kRelease);
    Add(m_changes, UINT64{1});
    return took;
}

CWriteFigures::Figures CWriteFigures::get() const {
    for (int tries = 0; tries < kMostTries; ++tries) {
        if (const auto figures = tryToGet()) {
            return *figures;
        }
    }
    return {m_bytes.load(kAcquire), m_writes.load(kAcquire), m_time.load(kAcquire), m_longest.load(kAcquire)};
}

// None when they did not belong together.
std::optional<CWriteFigures::Figures> CWriteFigures::tryToGet() const {
    const UINT64 before = m_changes.load(kAcquire);
    Figures figures{m_bytes.load(kAcquire), m_writes.load(kAcquire), m_time.load(kAcquire), m_longest.load(kAcquire)};
    const INT64 begin = m_begin.load(kAcquire);
    const bool isWriting = m_isWriting.load(kAcquire);
    if (before % 2 != 0 || m_changes.load(std::memory_order_relaxed) != before) {
        return std::nullopt;
    }
    if (isWriting) {
        const INT64 soFar = std::max<INT64>(m_clock() - begin, 0);
        figures.time += soFar;
        figures.longest = std::max(figures.longest, soFar);
    }
    return figures;
}

} // namespace mkv
