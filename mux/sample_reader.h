// Copies a media sample into a packet.
#pragma once

#include "mux/mux_inter_packet.h"
#include "win/platform.h"

// Fills times, data and flags; the packet shares nothing with the sample afterwards. A sample whose bytes cannot be
// reached gives a packet without data. Throws std::bad_alloc.
void ReadSample(IMediaSample& sample, CMuxInterPacket& packet);
