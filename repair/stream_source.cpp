#include "repair/stream_source.h"

namespace repair {

StreamSource::StreamSource(IStream& stream) : m_stream(stream) {
    ULARGE_INTEGER end{};
    if (SUCCEEDED(stream.Seek(LARGE_INTEGER{}, STREAM_SEEK_END, &end))) {
        m_size = end.QuadPart;
    }
}

size_t StreamSource::ReadAt(UINT64 offset, std::span<BYTE> buffer) const {
    LARGE_INTEGER position{};
    position.QuadPart = static_cast<LONGLONG>(offset);
    if (FAILED(m_stream.Seek(position, STREAM_SEEK_SET, nullptr))) {
        return 0;
    }
    size_t done = 0;
    while (done < buffer.size()) { // a stream may give less than asked for before its end
        ULONG got = 0;
        const HRESULT hr = m_stream.Read(buffer.data() + done, static_cast<ULONG>(buffer.size() - done), &got);
        if (FAILED(hr) || got == 0) {
            break;
        }
        done += got;
    }
    return done;
}

} // namespace repair
