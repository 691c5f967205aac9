#include "mux/connected_inputs.h"

void CConnectedInputs::Add() {
    const win::LockGuard lock(m_lock);
    m_majorTypes.emplace_back();
}

void CConnectedInputs::Connect(INT32 index, const GUID& majorType) {
    Set(index, majorType);
}

void CConnectedInputs::Disconnect(INT32 index) {
    Set(index, std::nullopt);
}

size_t CConnectedInputs::Count() const {
    const win::LockGuard lock(m_lock);
    return m_majorTypes.size();
}

std::optional<GUID> CConnectedInputs::MajorTypeOf(INT32 index) const {
    const win::LockGuard lock(m_lock);
    return IsInside(index) ? m_majorTypes[static_cast<size_t>(index)] : std::nullopt;
}

void CConnectedInputs::Set(INT32 index, const std::optional<GUID>& majorType) {
    const win::LockGuard lock(m_lock);
    if (IsInside(index)) {
        m_majorTypes[static_cast<size_t>(index)] = majorType;
    }
}
