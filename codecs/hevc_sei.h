// Supplemental enhancement information of H.265 (ITU-T H.265, 7.3.2.4 and annex D).
#pragma once

#include "codecs/byte_view.h"

namespace codecs {

// Whether the messages speak of the stream as a whole, so that they may stand in front of it, and not of the pictures
// that they came with. False for a damaged unit.
// unit: the whole NAL unit, header included and with its emulation prevention bytes.
[[nodiscard]] bool IsDeclarativeHevcSei(ByteView unit);

} // namespace codecs
