#include "mux/mux_inter_packet.h"

#include <new>

#include "mux/packet_slab.h"

void* CMuxInterPacket::operator new(size_t size) {
    return CPacketSlab::PacketBehind(*new (::operator new(CPacketSlab::kHeadBytes + size)) CPacketSlab*(nullptr));
}

void CMuxInterPacket::operator delete(void* packet) noexcept {
    CPacketSlab*& slab = CPacketSlab::SlabBefore(packet);
    if (slab != nullptr) {
        slab->Leave();
    } else {
        ::operator delete(&slab);
    }
}
