// ContentDecoder: undoes what was done to a track's data before it was stored: zlib and stripped headers.
//
// Owner: a copy of the track's encodings. Threads: any.
// Errors: Problem says why a track cannot be read at all; Decode gives none for data that is damaged.
#pragma once

#include <optional>
#include <string>

#include "tools/matroska_source/lacing.h"
#include "tools/matroska_source/matroska_file.h"

namespace matroska {

class ContentDecoder {
  public:
    enum class Part : UINT64 { Frames = 1, CodecPrivate = 2 }; // bits of the scope

    ContentDecoder(const std::vector<ContentEncoding>& encodings, Part part);

    // Empty when the track can be read.
    [[nodiscard]] std::string Problem() const;
    [[nodiscard]] bool ChangesNothing() const { return m_encodings.empty(); }
    [[nodiscard]] std::optional<std::vector<BYTE>> Decode(Bytes stored) const;

  private:
    std::vector<ContentEncoding> m_encodings;
};

} // namespace matroska
