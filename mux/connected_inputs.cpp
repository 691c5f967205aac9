#include "mux/connected_inputs.h"

void ConnectedInputs::Add() {
    const win::LockGuard lock(m_lock);
    m_majorTypes.emplace_back();
}

void ConnectedInputs::Connect(INT32 index, const GUID& majorType) {
    Set(index, majorType);
}

void ConnectedInputs::Disconnect(INT32 index) {
    Set(index, std::nullopt);
}

size_t ConnectedInputs::Count() const {
    const win::LockGuard lock(m_lock);
    return m_majorTypes.size();
}

std::optional<GUID> ConnectedInputs::MajorTypeOf(INT32 index) const {
    const win::LockGuard lock(m_lock);
    return IsInside(index) ? m_majorTypes[static_cast<size_t>(index)] : std::nullopt;
}

void ConnectedInputs::Set(INT32 index, const std::optional<GUID>& majorType) {
    const win::LockGuard lock(m_lock);
    if (IsInside(index)) {
        m_majorTypes[static_cast<size_t>(index)] = majorType;
    }
}
