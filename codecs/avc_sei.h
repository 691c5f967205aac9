// Supplemental enhancement information of H.264 (ITU-T H.264, 7.3.2.3 and annex D).
#pragma once

#include "codecs/byte_view.h"

namespace codecs {

// Whether a recovery point message says that the very next picture is right. False for a damaged unit.
// unit: the whole NAL unit, header included and with its emulation prevention bytes.
[[nodiscard]] bool IsExactRecoveryPoint(ByteView unit);

} // namespace codecs
