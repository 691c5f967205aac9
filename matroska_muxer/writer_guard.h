// The doorway between the writer, which throws fixed C strings, and the filter, which answers HRESULTs.
//
// Errors: VFW_E_INVALIDMEDIATYPE for a type or a codec that cannot be written, MUX_E_NOT_WEBM and the codes behind it
// for what WebM has not, E_OUTOFMEMORY, E_FAIL for the rest.
#pragma once

#include "win/platform.h"

// Logs the exception being handled as that step's, and says which HRESULT it becomes. Only in a catch block.
[[nodiscard]] HRESULT ResultOfWriterException(const WCHAR* step) noexcept;

template <typename Body>
[[nodiscard]] HRESULT GuardWriter(const WCHAR* step, Body body) noexcept {
    try {
        return body();
    } catch (...) {
        return ResultOfWriterException(step);
    }
}
