#include "sources/base/packet_reader.h"

namespace source {

namespace {

bool IsTime(REFERENCE_TIME time) {
    return time >= 0 && time <= kMaxTime;
}

bool IsSane(const Packet& packet) {
    return packet.data.size() <= kMaxPacketBytes && IsTime(packet.start) &&
           (!packet.hasStop || (IsTime(packet.stop) && packet.stop >= packet.start));
}

} // namespace

void PacketReader::Rewind() {
    m_lostPacket = false;
    StartOver();
}

bool PacketReader::Next(Packet& packet) {
    while (ReadNext(packet)) {
        if (IsSane(packet)) {
            return true;
        }
        m_lostPacket = true;
    }
    return false;
}

HRESULT PacketReader::Damage() const {
    return m_lostPacket ? HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT) : DamageSoFar();
}

} // namespace source
