#include "tests/sources/base/collecting_filter.h"

namespace test_source {

CollectingPin::CollectingPin(CBaseFilter* filter, CCritSec* lock, HRESULT* phr)
    : CBaseInputPin(OLESTR("CollectingPin"), filter, lock, phr, OLESTR("In")) {}

std::vector<CollectedSample> CollectingPin::Samples() const {
    const std::lock_guard guard(m_mutex);
    return m_samples;
}

bool CollectingPin::WaitForEnd(std::chrono::seconds timeout) const {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, timeout, [this] { return m_ended; });
}

bool CollectingPin::WaitForSamples(size_t count, std::chrono::seconds timeout) const {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, timeout, [&] { return m_samples.size() >= count; });
}

void CollectingPin::ReleaseSamples() {
    const std::lock_guard guard(m_mutex);
    m_kept.clear();
}

STDMETHODIMP CollectingPin::GetAllocator(IMemAllocator** allocator) noexcept {
    if (!m_offered) {
        return CBaseInputPin::GetAllocator(allocator);
    }
    m_offered.CopyTo(allocator);
    return S_OK;
}

STDMETHODIMP CollectingPin::NotifyAllocator(IMemAllocator* allocator, BOOL isReadOnly) noexcept {
    if (m_insists && allocator != m_offered.Get()) {
        return E_FAIL;
    }
    m_agreed = win::ComPtr<IMemAllocator>(allocator);
    return CBaseInputPin::NotifyAllocator(allocator, isReadOnly);
}

STDMETHODIMP CollectingPin::Receive(IMediaSample* sample) noexcept {
    const std::lock_guard guard(m_mutex);
    if (m_samples.size() >= m_most) {
        return S_FALSE;
    }
    BYTE* data = nullptr;
    CollectedSample collected;
    sample->GetPointer(&data);
    sample->GetTime(&collected.start, &collected.stop);
    collected.data.assign(reinterpret_cast<const char*>(data), static_cast<size_t>(sample->GetActualDataLength()));
    collected.keyframe = sample->IsSyncPoint() == S_OK;
    m_samples.push_back(std::move(collected));
    if (m_keeps) {
        m_kept.emplace_back(sample);
    }
    m_changed.notify_all();
    return S_OK;
}

STDMETHODIMP CollectingPin::EndOfStream() noexcept {
    const std::lock_guard guard(m_mutex);
    m_ended = true;
    m_changed.notify_all();
    return S_OK;
}

CollectingFilter::CollectingFilter(HRESULT* phr)
    : CBaseFilter(OLESTR("Collecting"), nullptr, &m_lock, GUID_NULL), m_pin(this, &m_lock, phr) {}

} // namespace test_source
