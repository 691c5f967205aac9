#include "mux/mux_statistics.h"

#include "win/steady_time.h"

void CMuxStatistics::AddInput() {
    const win::LockGuard lock(m_lock);
    m_inputs.emplace_back();
}

void CMuxStatistics::BeginRun() {
    const win::LockGuard lock(m_lock);
    for (Entry& entry : m_inputs) {
        entry = {};
    }
    m_isRunning = true;
    m_begin = win::SteadyTime();
}

void CMuxStatistics::Attach(INT32 input, const CMuxInterStream& stream) {
    const win::LockGuard lock(m_lock);
    if (Entry* const entry = Find(input)) {
        entry->stream = &stream;
        entry->kept.queueLimitBytes = stream.ByteLimit();
    }
}

// What is still queued never gets into the file.
void CMuxStatistics::EndRun() {
    const win::LockGuard lock(m_lock);
    if (!m_isRunning) {
        return;
    }
    for (Entry& entry : m_inputs) {
        if (entry.stream != nullptr) {
            CMuxInterStream::Figures& figures = entry.kept.stream;
            figures = entry.stream->GetFigures();
            entry.kept.refused += figures.queuedPackets;
            figures.queuedPackets = 0;
            figures.queuedBytes = 0;
            entry.stream = nullptr;
        }
    }
    m_isRunning = false;
    m_end = win::SteadyTime();
}

void CMuxStatistics::CountRefused(INT32 input) {
    const win::LockGuard lock(m_lock);
    Entry* const entry = Find(input);
    if (entry != nullptr && m_isRunning) {
        ++entry->kept.refused;
    }
}

std::optional<CMuxStatistics::Input> CMuxStatistics::Of(INT32 input) const {
    const win::LockGuard lock(m_lock);
    if (input < 0 || static_cast<size_t>(input) >= m_inputs.size()) {
        return std::nullopt;
    }
    const Entry& entry = m_inputs[static_cast<size_t>(input)];
    Input told = entry.kept;
    if (entry.stream != nullptr) {
        told.stream = entry.stream->GetFigures();
    }
    return told;
}

CMuxStatistics::Run CMuxStatistics::GetRun() const {
    const win::LockGuard lock(m_lock);
    return {m_isRunning, (m_isRunning ? win::SteadyTime() : m_end) - m_begin};
}

CMuxStatistics::Entry* CMuxStatistics::Find(INT32 input) {
    const bool isInside = input >= 0 && static_cast<size_t>(input) < m_inputs.size();
    return isInside ? &m_inputs[static_cast<size_t>(input)] : nullptr;
}
