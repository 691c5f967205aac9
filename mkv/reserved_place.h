// CReservedPlace: room in an element of the head, a Void there, for a child that is known only while the file is
// written. The child goes over it at once, so that a recording that is cut off has it; what is left stays a Void.
// Units: bytes. Owner: the file being written; the parent owns the Void, and outlives this. Threads: the writer's.
// Errors: what the output throws, std::bad_alloc.
#pragma once

#include <ebml/EbmlMaster.h>
#include <ebml/EbmlVoid.h>

#include "mkv/file_patcher.h"

namespace mkv {

class CReservedPlace {
  public:
    static constexpr UINT64 kMinBytes = 2;
    static constexpr UINT64 kMaxBytes = 3 + 0x3ffe; // with two bytes for the Void's size

    // The parent's next child, as long with its head; from kMinBytes to kMaxBytes.
    CReservedPlace(libebml::EbmlMaster& parent, UINT64 bytes);

    // Once the parent is in the file, and no second time. False, and nothing is written, for an element that does not
    // fit. A write that is lost is made again when the file is finished.
    bool fill(libebml::EbmlElement& element, CFilePatcher& patcher);
    [[nodiscard]] bool isFilled() const { return m_void == nullptr; }

  private:
    const libebml::EbmlVoid* m_void; // the parent's; null once it is filled
    const UINT64 m_bytes;
};

} // namespace mkv
