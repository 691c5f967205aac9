#include "tests/mux/test_muxer.h"

#include "dshow/media_subtypes.h"

namespace {

constexpr CLSID kTestMuxer{0x5a0b4a6e, 0x3f0d, 0x4e7c, {0x9d, 0x21, 0x6b, 0x52, 0x0c, 0x11, 0x7a, 0x03}};

} // namespace

TestMuxer::TestMuxer(Output output) : CBaseMux(OLESTR("TestMuxer"), nullptr, kTestMuxer) {
    if (output == Output::Present) {
        HRESULT hr = S_OK;
        m_outputPin = std::make_unique<CBaseMuxOutputPin>(OLESTR("OutPin"), this, &m_filterLock, &hr, OLESTR("Out"));
    }
    AddInputPin();
}

TestMuxer::~TestMuxer() {
    Stop();
}

std::vector<SeenPacket> TestMuxer::Seen() const {
    const std::lock_guard lock(m_seenLock);
    return m_seen;
}

bool TestMuxer::WaitForPackets(size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(m_seenLock);
    return m_seenMore.wait_for(lock, timeout, [&] { return m_seen.size() >= count; });
}

HRESULT TestMuxer::CheckInputType(const CMediaType* type) {
    return acceptsInput ? acceptsInput(*type) : CBaseMux::CheckInputType(type);
}

HRESULT TestMuxer::OnStartStreaming() {
    ++starts;
    const HRESULT hr = CBaseMux::OnStartStreaming();
    return onStart ? onStart() : hr;
}

HRESULT TestMuxer::OnStopStreaming() {
    ++stops;
    const HRESULT hr = CBaseMux::OnStopStreaming();
    return onStop ? onStop() : hr;
}

int TestMuxer::ProcessPacket(CMuxInterPacket* packet, CBaseMuxInputPin* pin) {
    if (onPacket) {
        onPacket(*packet, *pin);
    }
    SeenPacket seen{packet->start,       packet->stop,        {},           packet->syncPoint,         packet->hasTime,
                    packet->endOfStream, packet->streamIndex, pin->Index(), std::this_thread::get_id()};
    if (packet->size > 0) {
        seen.bytes.assign(packet->data.get(), packet->data.get() + packet->size);
    }
    {
        const std::lock_guard lock(m_seenLock);
        m_seen.push_back(std::move(seen));
    }
    m_seenMore.notify_all();
    return kMuxOk;
}

bool TestMuxer::IsStreamInterleaved(const CMediaType* type) {
    return interleavedOf ? interleavedOf(*type) : CBaseMux::IsStreamInterleaved(type);
}

MuxStreamKind TestMuxer::GetStreamKind(const CMediaType* type) {
    if (kindOf) {
        return kindOf(*type);
    }
    if (type->majortype == MEDIATYPE_Video) {
        return MuxStreamKind::Video;
    }
    if (type->majortype == MEDIATYPE_Audio) {
        return MuxStreamKind::Audio;
    }
    return type->majortype == mediatype::kSubtitle ? MuxStreamKind::Subtitle : CBaseMux::GetStreamKind(type);
}

bool TestMuxer::IsInputActive(int pinIndex) {
    return CBaseMux::IsInputActive(pinIndex) && (!activeOf || activeOf(pinIndex));
}
