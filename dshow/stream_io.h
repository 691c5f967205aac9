// Whole reads and writes on an IStream.
//
// Units: bytes. Errors: the stream's; a stream that ends early is HRESULT_FROM_WIN32(ERROR_HANDLE_EOF), one that
// takes less than it is given STG_E_MEDIUMFULL.
#pragma once

#include "win/platform.h"

[[nodiscard]] HRESULT ReadExactly(IStream* pStream, void* buffer, ULONG size);
[[nodiscard]] HRESULT WriteExactly(IStream* pStream, const void* buffer, ULONG size);
