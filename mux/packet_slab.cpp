#include "mux/packet_slab.h"

CMuxInterPacket* CPacketSlab::Make() {
    auto* const slab = new CPacketSlab; // deleted by Leave
    CMuxInterPacket* list = nullptr;
    for (size_t i = kPackets; i-- > 0;) { // so that the first one is used first
        Place& place = slab->m_places[i];
        place.slab = slab;
        auto* const packet = new (place.packet.data()) CMuxInterPacket;
        packet->next = list;
        list = packet;
    }
    return list;
}

void CPacketSlab::Leave() noexcept {
    if (m_alive.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}
