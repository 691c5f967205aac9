// PacketReader: the streams of one input, and their packets one after the other in the order of the file.
//
// Units: times in 100 ns. Owner: the source filter. Threads: one at a time; Streams never changes.
// Errors: Next ends early where the input cannot be read any further; Damage tells what was wrong so far.
#pragma once

#include <string>
#include <vector>

#include "dshow/media_type.h"
#include "tools/source_base/track_properties.h"
#include "win/wide_string.h"

namespace source {

// Larger packets are taken for damage, so that a flipped bit cannot ask for the whole memory.
inline constexpr UINT64 kMaxPacketBytes = UINT64{256} * 1024 * 1024;

struct StreamDescription {
    WideString name;               // of its pin
    std::vector<CMediaType> types; // the preferred one first; none: the stream gets no pin
    size_t largestPacket = 0;      // bytes; 0 when it is not known beforehand
    std::string problem;           // why there is no type: "V_AV1: …"
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
    virtual void Rewind() = 0;
    // False at the end; the packet's buffer is used again.
    [[nodiscard]] virtual bool Next(Packet& packet) = 0;
    // A failure when packets were lost since Rewind, else S_OK.
    [[nodiscard]] virtual HRESULT Damage() const { return S_OK; }
};

} // namespace source
