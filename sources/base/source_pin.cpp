#include "sources/base/source_pin.h"

#include <algorithm>
#include <cstdint>

#include "dshow/memory_allocator.h"

namespace source {

namespace {

constexpr LONG kBuffers = 4;
// All buffers of a pin together, where more than one is asked for: large packets get fewer buffers.
constexpr size_t kMaxPoolBytes = 128 * kMiB;
static_assert(kMaxPacketBytes <= kMaxPoolBytes);
static_assert(kMaxPoolBytes <= size_t{INT32_MAX} / 8); // the allocator multiplies in 32 bits
// For streams that do not tell how large their packets get; the buffers grow when one is too small.
constexpr size_t kFirstBufferBytes = size_t{64} * 1024;
// Of what the input claims beforehand, only so much is believed.
constexpr size_t kMaxFirstBufferBytes = kMiB;
constexpr size_t kMaxSlackBytes = 4 * kMiB;
constexpr DWORD kGrowPollMs = 1;
constexpr REFERENCE_TIME kEndOfTime = INT64_MAX;

// Buffers of so many bytes, as many as the pool has room for.
void AskFor(size_t bytes, LONG buffers, ALLOCATOR_PROPERTIES& request) {
    bytes = std::clamp<size_t>(bytes, 1, kMaxPacketBytes);
    request.cbBuffer = static_cast<LONG>(bytes);
    request.cBuffers = std::clamp<LONG>(buffers, 1, static_cast<LONG>(kMaxPoolBytes / bytes));
    request.cbAlign = std::max(request.cbAlign, LONG{1});
}

size_t BytesOf(LONG size) {
    return static_cast<size_t>(std::max(size, LONG{0}));
}

// Whether it is of the class that pins offer which have no allocator of their own and care for none. That class has no
// other name than the functions of its objects.
bool IsTheSystems(IMemAllocator& allocator) {
    win::ComPtr<IMemAllocator> one;
    const auto functionsOf = [](IMemAllocator& of) { return *reinterpret_cast<void**>(&of); };
    return SUCCEEDED(CreateMemoryAllocator(one.Put())) && functionsOf(allocator) == functionsOf(*one.Get());
}

} // namespace

CSourcePin::CSourcePin(CBaseFilter* filter, CCritSec* lock, HRESULT* phr, const StreamDescription& stream)
    : CBaseOutputPin(OLESTR("SourcePin"), filter, lock, phr, stream.name.c_str()), m_types(stream.types),
      m_firstBufferBytes(stream.largestPacket > 0 ? std::min(stream.largestPacket, kMaxFirstBufferBytes)
                                                  : kFirstBufferBytes) {}

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

HRESULT CSourcePin::DecideAllocator(IMemInputPin* peer, IMemAllocator** allocator) {
    m_ownAllocator.Reset();
    win::ComPtr<IMemAllocator> offered;
    const bool hasOffer = SUCCEEDED(peer->GetAllocator(offered.Put())) && offered && !IsTheSystems(*offered.Get());
    win::ComPtr<IMemAllocator> own;
    if (!hasOffer && SUCCEEDED(InitAllocator(own.Put())) && SUCCEEDED(OfferAllocator(peer, own.Get()))) {
        *allocator = own.Detach();
        return S_OK;
    }
    return CBaseOutputPin::DecideAllocator(peer, allocator);
}

HRESULT CSourcePin::InitAllocator(IMemAllocator** allocator) {
    m_ownAllocator = win::ComPtr<CPacketAllocator>(new CPacketAllocator);
    m_ownAllocator->AddRef(); // the caller's
    *allocator = m_ownAllocator.Get();
    return S_OK;
}

HRESULT CSourcePin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
    AskFor(std::max(BytesOf(request->cbBuffer), m_firstBufferBytes), std::max(request->cBuffers, kBuffers), *request);
    ALLOCATOR_PROPERTIES actual{};
    const HRESULT hr = allocator->SetProperties(request, &actual);
    if (FAILED(hr)) {
        return hr;
    }
    m_bufferBytes = BytesOf(actual.cbBuffer);
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

HRESULT CSourcePin::DeliverPacket(Packet& packet) {
    const HRESULT hr = m_takesSamples ? Send(packet) : S_FALSE;
    m_takesSamples = hr != S_FALSE;
    return hr;
}

HRESULT CSourcePin::Send(Packet& packet) {
    HRESULT hr = MakeRoom(packet.data.size());
    win::ComPtr<IMediaSample> sample;
    if (SUCCEEDED(hr)) {
        hr = MakeSample(packet, sample);
    }
    if (hr == VFW_E_NOT_COMMITTED) { // the peer has stopped
        return S_FALSE;
    }
    return FAILED(hr) ? hr : (Deliver(sample.Get()) == S_OK ? S_OK : S_FALSE);
}

// Buffers can be exchanged only while the peer holds none.
HRESULT CSourcePin::MakeRoom(size_t bytes) {
    if (bytes > kMaxPacketBytes) {
        return VFW_E_BUFFER_OVERFLOW;
    }
    HRESULT hr = S_OK;
    while (bytes > m_bufferBytes && (hr = TryToGrow(bytes)) == VFW_E_BUFFERS_OUTSTANDING) {
        Sleep(kGrowPollMs);
    }
    return hr;
}

// Where the allocator refuses, it keeps the buffers that it had.
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
    AskFor(bytes + std::min(bytes / 2, kMaxSlackBytes), wanted.cBuffers, wanted); // so that it happens seldom
    ALLOCATOR_PROPERTIES actual{};
    hr = m_pAllocator->SetProperties(&wanted, &actual);
    if (SUCCEEDED(hr)) {
        m_bufferBytes = BytesOf(actual.cbBuffer);
        hr = bytes > m_bufferBytes ? VFW_E_BUFFER_OVERFLOW : hr;
    }
    const HRESULT committed = m_pAllocator->Commit();
    return FAILED(hr) ? hr : committed;
}

HRESULT CSourcePin::MakeSample(Packet& packet, win::ComPtr<IMediaSample>& sample) {
    const auto bytes = static_cast<LONG>(packet.data.size());
    if (m_ownAllocator && m_pAllocator.Get() == m_ownAllocator.Get()) {
        PacketSample* own = nullptr;
        const HRESULT hr = m_ownAllocator->GetSample(&own);
        if (FAILED(hr)) {
            return hr;
        }
        sample.Attach(own);
        own->Exchange(packet.data);
    } else {
        HRESULT hr = GetDeliveryBuffer(sample.Put(), nullptr, nullptr, 0);
        if (FAILED(hr) || FAILED(hr = Copy(packet, *sample.Get()))) {
            return hr;
        }
    }
    return Describe(packet, bytes, *sample.Get());
}

// What the sample itself says of its size is believed over all that was agreed on.
HRESULT CSourcePin::Copy(const Packet& packet, IMediaSample& sample) {
    BYTE* data = nullptr;
    if (const HRESULT hr = sample.GetPointer(&data); FAILED(hr)) {
        return hr;
    }
    if (data == nullptr || BytesOf(sample.GetSize()) < packet.data.size()) {
        return VFW_E_BUFFER_OVERFLOW;
    }
    std::copy(packet.data.begin(), packet.data.end(), data);
    return S_OK;
}

HRESULT CSourcePin::Describe(const Packet& packet, LONG bytes, IMediaSample& sample) {
    REFERENCE_TIME start = packet.start;
    REFERENCE_TIME stop = packet.stop;
    HRESULT hr = S_OK;
    if (FAILED(hr = sample.SetActualDataLength(bytes)) ||
        FAILED(hr = sample.SetTime(&start, packet.hasStop ? &stop : nullptr))) {
        return hr;
    }
    return sample.SetSyncPoint(packet.keyframe ? TRUE : FALSE);
}

void CSourcePin::DeliverEnd() {
    if (IsConnected() != FALSE) {
        DeliverEndOfStream();
    }
}

} // namespace source
