#include "dshow/stream_io.h"

HRESULT ReadExactly(IStream* pStream, void* buffer, ULONG size) {
    ULONG read = 0;
    const HRESULT hr = pStream->Read(buffer, size, &read);
    if (FAILED(hr)) {
        return hr;
    }
    return read == size ? S_OK : HRESULT_FROM_WIN32(ERROR_HANDLE_EOF);
}

HRESULT WriteExactly(IStream* pStream, const void* buffer, ULONG size) {
    ULONG written = 0;
    const HRESULT hr = pStream->Write(buffer, size, &written);
    if (FAILED(hr)) {
        return hr;
    }
    return written == size ? S_OK : STG_E_MEDIUMFULL;
}
