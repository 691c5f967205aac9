#include "bench/null_stream.h"

#include <algorithm>

namespace bench {

HRESULT NullStream::Read(void*, ULONG, ULONG* read) {
    if (read != nullptr) {
        *read = 0;
    }
    return S_FALSE;
}

HRESULT NullStream::Write(const void*, ULONG size, ULONG* written) {
    OnWrite();
    m_position += size;
    m_size = std::max(m_size.load(), m_position);
    if (written != nullptr) {
        *written = size;
    }
    return S_OK;
}

HRESULT NullStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) {
    UINT64 base = 0;
    if (origin == STREAM_SEEK_CUR) {
        base = m_position;
    } else if (origin == STREAM_SEEK_END) {
        base = m_size;
    }
    m_position = base + static_cast<UINT64>(move.QuadPart);
    if (position != nullptr) {
        position->QuadPart = m_position;
    }
    return S_OK;
}

} // namespace bench
