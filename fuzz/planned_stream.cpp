#include "fuzz/planned_stream.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace fuzz {

using test_support::StreamOperation;

namespace {

HRESULT AnswerOf(const PlannedFault& fault) {
    return fault.kind == PlannedFault::Kind::Full ? STG_E_MEDIUMFULL : E_FAIL;
}

} // namespace

void PlannedStream::BeginRun(std::vector<PlannedFault> faults) {
    const std::lock_guard guard(m_lock);
    m_memory.SetRecording(false);
    m_faults = std::move(faults);
    std::fill(std::begin(m_calls), std::end(m_calls), 0);
    std::fill(std::begin(m_failed), std::end(m_failed), 0);
    m_writes.clear();
}

void PlannedStream::ForgetWrites() {
    const std::lock_guard guard(m_lock);
    m_writes.clear();
}

size_t PlannedStream::Failed(StreamOperation operation) const {
    const std::lock_guard guard(m_lock);
    return m_failed[static_cast<size_t>(operation)];
}

bool PlannedStream::HasFailed() const {
    const std::lock_guard guard(m_lock);
    return std::accumulate(std::begin(m_failed), std::end(m_failed), size_t{0}) > 0;
}

const PlannedFault* PlannedStream::FaultOf(StreamOperation operation) {
    const std::uint32_t call = m_calls[static_cast<size_t>(operation)]++;
    const auto found = std::ranges::find_if(m_faults, [&](const PlannedFault& fault) {
        return fault.operation == operation && call >= fault.first && call - fault.first < fault.count;
    });
    if (found == m_faults.end()) {
        return nullptr;
    }
    ++m_failed[static_cast<size_t>(operation)];
    return &*found;
}

HRESULT PlannedStream::Read(void* buffer, ULONG size, ULONG* read) {
    const std::lock_guard guard(m_lock);
    const PlannedFault* const fault = FaultOf(StreamOperation::Read);
    return fault != nullptr ? AnswerOf(*fault) : m_memory.Read(buffer, size, read);
}

HRESULT PlannedStream::Write(const void* buffer, ULONG size, ULONG* written) {
    const std::lock_guard guard(m_lock);
    const PlannedFault* const fault = FaultOf(StreamOperation::Write);
    const auto* const bytes = static_cast<const BYTE*>(buffer);
    m_writes.push_back({m_memory.Position(), {bytes, bytes + size}, fault == nullptr, false});
    if (fault == nullptr) {
        return m_memory.Write(buffer, size, written);
    }
    const bool keepsSome = fault->kind == PlannedFault::Kind::Short || fault->kind == PlannedFault::Kind::ShortError;
    ULONG kept = 0;
    if (keepsSome && size > 0) {
        (void)m_memory.Write(buffer, std::min<ULONG>(fault->keptBytes, size - 1), &kept);
    }
    m_writes.back().isTorn = kept > 0;
    if (written != nullptr) {
        *written = kept;
    }
    return fault->kind == PlannedFault::Kind::Short ? S_OK : AnswerOf(*fault);
}

HRESULT PlannedStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) {
    const std::lock_guard guard(m_lock);
    const PlannedFault* const fault = FaultOf(StreamOperation::Seek);
    return fault != nullptr ? AnswerOf(*fault) : m_memory.Seek(move, origin, newPosition);
}

HRESULT PlannedStream::SetSize(ULARGE_INTEGER size) {
    const std::lock_guard guard(m_lock);
    const PlannedFault* const fault = FaultOf(StreamOperation::SetSize);
    return fault != nullptr ? AnswerOf(*fault) : m_memory.SetSize(size);
}

HRESULT PlannedStream::Stat(STATSTG* stat, DWORD flags) {
    const std::lock_guard guard(m_lock);
    const PlannedFault* const fault = FaultOf(StreamOperation::Stat);
    return fault != nullptr ? AnswerOf(*fault) : m_memory.Stat(stat, flags);
}

} // namespace fuzz
