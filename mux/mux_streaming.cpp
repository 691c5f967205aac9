#include "mux/mux_streaming.h"

#include "mux/base_mux.h"

void CMuxStreaming::EndAllWaits() {
    m_interleaver.SetStop();
    m_abort.store(true, std::memory_order_release);
}

void CMuxStreaming::AllowWaits() {
    m_interleaver.ResetStop();
    m_abort.store(false, std::memory_order_release);
}

// All streams exist before the first pin feeds one, since upstream threads may run already.
void CMuxStreaming::Start(const InputPins& pins) {
    std::vector<CMuxInterStream*> streams;
    for (const auto& pin : pins) {
        pin->DetachStream();
        streams.push_back(m_mux.IsInputActive(pin->Index()) ? CreateStream(*pin) : nullptr);
    }
    for (size_t i = 0; i < streams.size(); ++i) {
        pins[i]->AttachStream(streams[i]);
    }
}

// The pins let go of their streams before these are destroyed.
void CMuxStreaming::Stop(const InputPins& pins) {
    for (const auto& pin : pins) {
        pin->DetachStream();
    }
    m_mux.Statistics().EndRun();
    m_interleaver.ClearStreams();
}

CMuxInterStream* CMuxStreaming::CreateStream(CBaseMuxInputPin& pin) {
    const CMediaType& type = pin.CurrentMediaType();
    CMuxInterStream* const stream = m_interleaver.AddStream();
    const bool interleaved = m_mux.IsStreamInterleaved(&type);
    stream->Attach(&pin, m_mux.GetStreamKind(&type), interleaved);
    m_mux.Statistics().Attach(pin.Index(), *stream);
    return stream;
}
