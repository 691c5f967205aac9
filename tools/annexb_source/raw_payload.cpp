#include "tools/annexb_source/raw_payload.h"

namespace annexb {

std::vector<BYTE> RawPayload(Bytes unit, size_t headerBytes) {
    std::vector<BYTE> payload;
    if (unit.size() < headerBytes) {
        return payload;
    }
    payload.reserve(unit.size());
    unsigned zeros = 0;
    for (const BYTE byte : unit.subspan(headerBytes)) {
        if (zeros >= 2 && byte == 3) {
            zeros = 0;
            continue;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        payload.push_back(byte);
    }
    return payload;
}

INT32 ReadSE(mkv::BitstreamReader& reader) {
    const INT64 code = reader.ReadUE();
    return static_cast<INT32>(code % 2 != 0 ? (code + 1) / 2 : -(code / 2));
}

} // namespace annexb
