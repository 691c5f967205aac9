// CUntimedAudioClock: gives MP3 and Vorbis packets that come without a time one that runs on from the packet before.
//
// Units: 100 ns. Owner: the input pin's frame grouper, under whose lock it runs.
// Errors: a format block too short to tell the bit rate gives packets of no duration.
#pragma once

#include "mux/mux_inter_packet.h"
#include "win/platform.h"

class CUntimedAudioClock {
  public:
    // Every packet of the input passes here, timed or not.
    void Stamp(CMuxInterPacket& packet, const AM_MEDIA_TYPE& type);
    void Reset() { m_nextTime = 0; }

  private:
    INT64 m_nextTime = 0; // the stop time of the packet before
};
