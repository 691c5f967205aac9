// End of stream of one input: queued behind its data, so that it can never overtake any.
#include "log/logger.h"
#include "mux/base_mux.h"

namespace {

// Any stable number serves the log's reader.
INT64 NumberOf(const CBaseMuxInputPin& pin) {
    return static_cast<INT64>(reinterpret_cast<intptr_t>(&pin));
}

void LogForPin(const WCHAR* text, const CBaseMuxInputPin& pin) {
    g_Logger << text << NumberOf(pin) << OLESTR("\r\n");
}

} // namespace

HRESULT CBaseMux::EndOfStream(CBaseMuxInputPin* pin) {
    if (pin == nullptr) {
        return kMuxFailedResult;
    }
    const StreamGate::Pass pass(pin->Gate());
    CMuxInterStream* const stream = pass.Stream();
    if (stream == nullptr) {
        return kMuxFailedResult;
    }
    LogForPin(OLESTR("CBaseMux::EndOfStream pin="), *pin);
    if (!WaitForRoomAtEnd(*pin, *stream)) {
        return kMuxFailedResult;
    }
    return QueueEndOfStream(*pin, *stream) ? S_OK : kMuxFailedResult;
}

bool CBaseMux::WaitForRoomAtEnd(CBaseMuxInputPin& pin, CMuxInterStream& stream) {
    LogForPin(OLESTR("CBaseMux::EndOfStream wait WaitStreamWritable pin="), pin);
    switch (pin.WaitForRoom(stream)) {
    case CBaseMuxInputPin::RoomWait::Writable:
        LogForPin(OLESTR("CBaseMux::EndOfStream wait dw == WAIT_OBJECT_0 pin="), pin);
        return true;
    case CBaseMuxInputPin::RoomWait::Flushing:
        LogForPin(OLESTR("CBaseMux::EndOfStream (pin->IsFlushing())"), pin);
        return false;
    case CBaseMuxInputPin::RoomWait::Stopping:
        LogForPin(OLESTR("CBaseMux::EndOfStream wait (return -1) pin="), pin);
        return false;
    case CBaseMuxInputPin::RoomWait::Aborted:
        break;
    }
    return false;
}

// The held packets go as they are, unmerged; those without data are nothing to write.
bool CBaseMux::QueueEndOfStream(CBaseMuxInputPin& pin, CMuxInterStream& stream) {
    for (auto& held : pin.TakeHeldPackets()) {
        if (held->size > 0 && m_interleaver.AddPacket(std::move(held)) != kMuxOk) {
            return false;
        }
    }
    std::unique_ptr<CMuxInterPacket> packet;
    if (m_interleaver.NewPacket(static_cast<INT32>(stream.Index()), packet) != kMuxOk) {
        return false;
    }
    packet->endOfStream = true;
    return m_interleaver.AddPacket(std::move(packet)) == kMuxOk;
}
