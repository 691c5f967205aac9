// Buffers that are used again for one packet after the other.
#pragma once

#include <vector>

#include "win/platform.h"

namespace source {

// So many bytes, whatever they are: where memory must be taken, nothing of the old content is moved, and no more than
// asked for is taken.
inline void ResizeUnkept(std::vector<BYTE>& bytes, size_t size) {
    if (bytes.capacity() < size) {
        bytes = std::vector<BYTE>(); // before the new ones, not beside them
        bytes.reserve(size);
    }
    bytes.resize(size);
}

} // namespace source
