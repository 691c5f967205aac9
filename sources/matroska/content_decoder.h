// ContentDecoder: undoes what was done to a track's data before it was stored: zlib or a stripped header.
//
// Owner: a copy of the track's encoding. Threads: any.
// Errors: Problem says why a track cannot be read at all; Decode gives none for data that is damaged.
#pragma once

#include <optional>
#include <string>

#include "codecs/byte_view.h"
#include "sources/matroska/matroska_file.h"

namespace matroska {

class ContentDecoder {
  public:
    enum class Part : UINT64 { Frames = 1, CodecPrivate = 2 }; // bits of the scope

    // What decoding makes larger by that is damage, at which a few bytes would fill the memory. Deflate itself ends at
    // 1032 to 1, and only from about 700 KiB of one and the same byte on does zlib come above 1000: no subtitle picture
    // and no text does, however empty.
    static constexpr size_t kMaxRatio = 1000;

    ContentDecoder(const std::vector<ContentEncoding>& encodings, Part part);

    // Empty when the track can be read.
    [[nodiscard]] std::string Problem() const;
    [[nodiscard]] bool ChangesNothing() const { return !m_encoding; }
    // None as well for what would become larger than the room, or kMaxRatio times as large: it stops there. What came
    // out is taken off the room, whether it was of use or not.
    [[nodiscard]] std::optional<std::vector<BYTE>> Decode(codecs::ByteView stored, size_t& room) const;

  private:
    std::optional<ContentEncoding> m_encoding;
    bool m_hasSeveral = false;
};

} // namespace matroska
