// Copies a media sample into a packet.
#pragma once

#include "mux/mux_inter_packet.h"
#include "mux/payload_pool.h"
#include "win/platform.h"

// Fills times, data (from that pool) and flags; the packet shares nothing with the sample afterwards. A sample whose
// bytes cannot be reached gives a packet without data. Throws std::bad_alloc.
void ReadSample(IMediaSample& sample, CPayloadPool& payloads, CMuxInterPacket& packet);
