// What a file is called until it is whole, beside its place.
#pragma once

#include <string>

#include "win/temporary_file.h"

namespace mkvmux {

[[nodiscard]] inline std::wstring NewTemporaryName() {
    return win::TemporaryFile::RandomName(L"mkvmux");
}

} // namespace mkvmux
