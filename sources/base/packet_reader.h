// PacketReader: the streams of one input, and their packets one after the other in the order of the file.
//
// Units: times in 100 ns. Owner: the source filter. Threads: one at a time; Streams never changes.
// Errors: Next ends early where the input cannot be read any further; Damage tells what was wrong so far.
#pragma once

#include <string>
#include <vector>

#include "dshow/media_type.h"
#include "sources/base/limits.h"
#include "sources/base/track_properties.h"
#include "win/wide_string.h"

namespace source {

struct StreamDescription {
    WideString name;               // of its pin
    std::vector<CMediaType> types; // the preferred one first; none: the stream gets no pin
    size_t largestPacket = 0;      // bytes; 0 when it is not known beforehand
    std::string problem;           // why there is no type: "V_DIRAC: …"
    TrackProperties properties;
};

struct Packet {
    size_t stream = 0; // position among the streams
    std::vector<BYTE> data;
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    bool hasStop = false;
    bool keyframe = false;
};

class PacketReader {
  public:
    virtual ~PacketReader() = default;

    [[nodiscard]] virtual const std::vector<StreamDescription>& Streams() const = 0;
    // Begins at the start again.
    void Rewind();
    // False at the end; the packet's buffer is used again. Whatever the reader makes of its input, a packet is no
    // larger than kMaxPacketBytes and its times are between zero and kMaxTime: others are lost.
    [[nodiscard]] bool Next(Packet& packet);
    // A failure when packets were lost since Rewind, else S_OK.
    [[nodiscard]] HRESULT Damage() const;

  private:
    virtual void StartOver() = 0;
    // As Next, without its promise.
    [[nodiscard]] virtual bool ReadNext(Packet& packet) = 0;
    // As Damage, of what ReadNext lost.
    [[nodiscard]] virtual HRESULT DamageSoFar() const { return S_OK; }

    bool m_lostPacket = false;
};

} // namespace source
