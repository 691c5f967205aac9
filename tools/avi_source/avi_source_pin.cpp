#include "tools/avi_source/avi_source_pin.h"

#include <algorithm>

#include "tools/avi_source/avi_media_type.h"

namespace avi {

namespace {

constexpr REFERENCE_TIME kSecond = 10'000'000; // in units of 100 ns
constexpr LONG kBuffers = 4;

} // namespace

CAviSourcePin::CAviSourcePin(CBaseFilter* filter, CCritSec* lock, HRESULT* phr, const AviStream& stream,
                             const WideString& name)
    : CBaseOutputPin(OLESTR("AviSourcePin"), filter, lock, phr, name.c_str()), m_type(MediaTypeOf(stream)),
      m_scale(stream.scale), m_rate(stream.rate), m_sampleSize(stream.sampleSize), m_largestChunk(stream.largestChunk) {
}

HRESULT CAviSourcePin::CheckMediaType(const CMediaType* type) {
    return m_type.IsValid() && *type == m_type ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT CAviSourcePin::GetMediaType(int position, CMediaType* type) {
    if (position != 0 || !m_type.IsValid()) {
        return position < 0 ? E_INVALIDARG : VFW_S_NO_MORE_ITEMS;
    }
    return type->Set(m_type);
}

HRESULT CAviSourcePin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
    request->cBuffers = std::max(request->cBuffers, kBuffers);
    request->cbBuffer = std::max({request->cbBuffer, static_cast<LONG>(m_largestChunk), LONG{1}});
    request->cbAlign = std::max(request->cbAlign, LONG{1});
    ALLOCATOR_PROPERTIES actual{};
    const HRESULT hr = allocator->SetProperties(request, &actual);
    return SUCCEEDED(hr) && actual.cbBuffer < request->cbBuffer ? E_FAIL : hr;
}

void CAviSourcePin::Rewind() {
    m_bytes = 0;
    m_chunks = 0;
    m_takesSamples = IsConnected() != FALSE;
}

// In 100 ns; long files of fine time bases stay within 64 bits because whole seconds are counted first.
REFERENCE_TIME CAviSourcePin::TimeOf(UINT64 unit) const {
    if (m_rate == 0) {
        return 0;
    }
    const UINT64 ticks = unit * m_scale;
    return static_cast<REFERENCE_TIME>(ticks / m_rate * kSecond + ticks % m_rate * kSecond / m_rate);
}

void CAviSourcePin::DeliverChunk(const ByteSource& source, const AviChunk& chunk) {
    const UINT64 nextUnit = m_sampleSize > 0 ? (m_bytes + chunk.size) / m_sampleSize : m_chunks + 1;
    if (m_takesSamples && chunk.size > 0) { // an empty chunk is a picture that stays
        win::ComPtr<IMediaSample> sample;
        m_takesSamples = SUCCEEDED(GetDeliveryBuffer(sample.Put(), nullptr, nullptr, 0)) &&
                         Fill(*sample.Get(), source, chunk, nextUnit) && Deliver(sample.Get()) == S_OK;
    }
    m_bytes += chunk.size;
    ++m_chunks;
}

bool CAviSourcePin::Fill(IMediaSample& sample, const ByteSource& source, const AviChunk& chunk, UINT64 nextUnit) const {
    BYTE* data = nullptr;
    if (FAILED(sample.GetPointer(&data)) || sample.GetSize() < static_cast<LONG>(chunk.size) ||
        source.ReadAt(chunk.offset, {data, chunk.size}) != chunk.size) {
        return false;
    }
    REFERENCE_TIME start = TimeOf(m_sampleSize > 0 ? m_bytes / m_sampleSize : m_chunks);
    REFERENCE_TIME stop = TimeOf(nextUnit);
    return SUCCEEDED(sample.SetActualDataLength(static_cast<LONG>(chunk.size))) &&
           SUCCEEDED(sample.SetTime(&start, &stop)) && SUCCEEDED(sample.SetSyncPoint(chunk.keyframe ? TRUE : FALSE));
}

void CAviSourcePin::DeliverEnd() {
    if (IsConnected() != FALSE) {
        DeliverEndOfStream();
    }
}

} // namespace avi
