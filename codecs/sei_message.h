// One message of supplemental enhancement information, of H.264 and H.265 alike (ITU-T H.264 and H.265, 7.3.2.3.1 and
// 7.3.5).
//
// Owner: a view of the unit's raw payload.
#pragma once

#include <optional>

#include "codecs/byte_view.h"

namespace codecs {

struct SeiMessage {
    uint32_t type = 0;
    ByteView payload;
};

// Off the front of a raw payload. None at its end, and for a message that is longer than the payload.
[[nodiscard]] std::optional<SeiMessage> TakeSeiMessage(ByteView& rest);

} // namespace codecs
