#include "sources/annexb/raw_payload.h"

namespace annexb {

INT32 ReadSE(codecs::BitstreamReader& reader) {
    const INT64 code = reader.ReadUE();
    return static_cast<INT32>(code % 2 != 0 ? (code + 1) / 2 : -(code / 2));
}

} // namespace annexb
