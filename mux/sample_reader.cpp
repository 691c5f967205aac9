#include "mux/sample_reader.h"

#include <cstring>

namespace {

void ReadTime(IMediaSample& sample, CMuxInterPacket& packet) {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const HRESULT hr = sample.GetTime(&start, &stop);
    packet.hasTime = hr == S_OK || hr == VFW_S_NO_STOP_TIME;
    packet.start = packet.hasTime ? start : 0;
    packet.stop = hr == S_OK ? stop : packet.start;
}

void ReadData(IMediaSample& sample, CPayloadPool& payloads, CMuxInterPacket& packet) {
    const LONG length = sample.GetActualDataLength();
    BYTE* bytes = nullptr;
    if (length <= 0 || FAILED(sample.GetPointer(&bytes)) || bytes == nullptr) {
        return;
    }
    const auto size = static_cast<UINT32>(length);
    packet.data = payloads.Take(size);
    std::memcpy(packet.data.get(), bytes, size);
    packet.size = size;
}

} // namespace

void ReadSample(IMediaSample& sample, CPayloadPool& payloads, CMuxInterPacket& packet) {
    ReadTime(sample, packet);
    ReadData(sample, payloads, packet);
    packet.syncPoint = sample.IsSyncPoint() == S_OK;
}
