#include "tools/source_base/source_pin.h"

#include <algorithm>
#include <cstdint>

namespace source {

namespace {

constexpr LONG kBuffers = 4;
// For streams that do not tell how large their packets get; the buffers grow when one is too small.
constexpr size_t kFirstBufferBytes = size_t{64} * 1024;
constexpr size_t kMaxSlackBytes = size_t{4} * 1024 * 1024;
constexpr DWORD kGrowPollMs = 1;
constexpr REFERENCE_TIME kEndOfTime = INT64_MAX;

} // namespace

CSourcePin::CSourcePin(CBaseFilter* filter, CCritSec* lock, HRESULT* phr, const StreamDescription& stream)
    : CBaseOutputPin(OLESTR("SourcePin"), filter, lock, phr, stream.name.c_str()), m_types(stream.types),
      m_firstBufferBytes(stream.largestPacket > 0 ? stream.largestPacket : kFirstBufferBytes) {}

HRESULT CSourcePin::CheckMediaType(const CMediaType* type) {
    const bool isOffered =
        std::any_of(m_types.begin(), m_types.end(), [type](const CMediaType& offered) { return *type == offered; });
    return isOffered ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT CSourcePin::GetMediaType(int position, CMediaType* type) {
    if (position < 0) {
        return E_INVALIDARG;
    }
    const auto index = static_cast<size_t>(position);
    return index < m_types.size() ? type->Set(m_types[index]) : VFW_S_NO_MORE_ITEMS;
}

HRESULT CSourcePin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
    request->cBuffers = std::max(request->cBuffers, kBuffers);
    request->cbBuffer = std::max({request->cbBuffer, static_cast<LONG>(m_firstBufferBytes), LONG{1}});
    request->cbAlign = std::max(request->cbAlign, LONG{1});
    ALLOCATOR_PROPERTIES actual{};
    const HRESULT hr = allocator->SetProperties(request, &actual);
    if (FAILED(hr)) {
        return hr;
    }
    m_bufferBytes = actual.cbBuffer;
    return actual.cbBuffer < request->cbBuffer ? E_FAIL : hr;
}

HRESULT CSourcePin::Active() {
    const CAutoLock lock(&m_growLock);
    const HRESULT hr = CBaseOutputPin::Active();
    m_active = SUCCEEDED(hr);
    return hr;
}

HRESULT CSourcePin::Inactive() {
    const CAutoLock lock(&m_growLock);
    m_active = false;
    return CBaseOutputPin::Inactive();
}

void CSourcePin::Begin() {
    m_takesSamples = IsConnected() != FALSE;
    if (m_takesSamples) {
        DeliverNewSegment(0, kEndOfTime, 1.0);
    }
}

void CSourcePin::DeliverPacket(const Packet& packet) {
    m_takesSamples = m_takesSamples && Send(packet);
}

bool CSourcePin::Send(const Packet& packet) {
    win::ComPtr<IMediaSample> sample;
    return SUCCEEDED(MakeRoom(packet.data.size())) && SUCCEEDED(GetDeliveryBuffer(sample.Put(), nullptr, nullptr, 0)) &&
           Fill(*sample.Get(), packet) && Deliver(sample.Get()) == S_OK;
}

// Buffers can be exchanged only while the peer holds none.
HRESULT CSourcePin::MakeRoom(size_t bytes) {
    HRESULT hr = S_OK;
    while (bytes > static_cast<size_t>(m_bufferBytes) && (hr = TryToGrow(bytes)) == VFW_E_BUFFERS_OUTSTANDING) {
        Sleep(kGrowPollMs);
    }
    return hr;
}

HRESULT CSourcePin::TryToGrow(size_t bytes) {
    const CAutoLock lock(&m_growLock);
    if (!m_active || !m_pAllocator) {
        return VFW_E_NOT_COMMITTED;
    }
    ALLOCATOR_PROPERTIES wanted{};
    HRESULT hr = m_pAllocator->GetProperties(&wanted);
    if (FAILED(hr) || FAILED(hr = m_pAllocator->Decommit())) {
        return hr;
    }
    wanted.cbBuffer = static_cast<LONG>(bytes + std::min(bytes / 2, kMaxSlackBytes)); // so that it happens seldom
    ALLOCATOR_PROPERTIES actual{};
    hr = m_pAllocator->SetProperties(&wanted, &actual);
    if (SUCCEEDED(hr)) {
        m_bufferBytes = actual.cbBuffer;
    }
    const HRESULT committed = m_pAllocator->Commit();
    return FAILED(hr) ? hr : committed;
}

bool CSourcePin::Fill(IMediaSample& sample, const Packet& packet) {
    BYTE* data = nullptr;
    const auto size = static_cast<LONG>(packet.data.size());
    if (FAILED(sample.GetPointer(&data)) || sample.GetSize() < size) {
        return false;
    }
    std::copy(packet.data.begin(), packet.data.end(), data);
    REFERENCE_TIME start = packet.start;
    REFERENCE_TIME stop = packet.stop;
    return SUCCEEDED(sample.SetActualDataLength(size)) &&
           SUCCEEDED(sample.SetTime(&start, packet.hasStop ? &stop : nullptr)) &&
           SUCCEEDED(sample.SetSyncPoint(packet.keyframe ? TRUE : FALSE));
}

void CSourcePin::DeliverEnd() {
    if (IsConnected() != FALSE) {
        DeliverEndOfStream();
    }
}

} // namespace source
