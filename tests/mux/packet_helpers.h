// Packets for the interleaver's tests.
#pragma once

#include <memory>

#include "mux/mux_inter_packet.h"

inline std::unique_ptr<CMuxInterPacket> MakePacket(INT32 streamIndex, INT64 start, UINT32 size = 1) {
    auto packet = std::make_unique<CMuxInterPacket>(streamIndex);
    packet->start = start;
    packet->stop = start;
    packet->size = size;
    packet->data = std::make_unique<BYTE[]>(size);
    packet->hasTime = true;
    return packet;
}

inline std::unique_ptr<CMuxInterPacket> MakeEndOfStream(INT32 streamIndex) {
    auto packet = std::make_unique<CMuxInterPacket>(streamIndex);
    packet->endOfStream = true;
    return packet;
}
