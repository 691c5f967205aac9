#include "mkv/mkv_io.h"

#include <limits>

#include "mkv/writer_errors.h"

namespace {

// The modes are passed on as they are.
static_assert(libebml::seek_beginning == static_cast<int>(STREAM_SEEK_SET));
static_assert(libebml::seek_current == static_cast<int>(STREAM_SEEK_CUR));
static_assert(libebml::seek_end == static_cast<int>(STREAM_SEEK_END));

bool IsKnownMode(libebml::seek_mode mode) {
    return mode == libebml::seek_beginning || mode == libebml::seek_current || mode == libebml::seek_end;
}

ULONG ToStreamSize(size_t size) {
    return static_cast<ULONG>(size & std::numeric_limits<ULONG>::max());
}

} // namespace

void CMkvIO::setStream(IStream* stream) {
    m_stream.Reset();
    m_stream = stream;
}

void CMkvIO::releaseStream() {
    m_stream.Reset();
}

uint32 CMkvIO::read(void* buffer, size_t size) {
    if (!m_stream) {
        return 0;
    }
    ULONG got = 0;
    m_stream->Read(buffer, ToStreamSize(size), &got);
    return got;
}

size_t CMkvIO::write(const void* buffer, size_t size) {
    if (!m_stream) {
        return 0;
    }
    const ULONG asked = ToStreamSize(size);
    ULONG written = 0;
    m_lastWriteResult = m_stream->Write(buffer, asked, &written);
    return asked;
}

void CMkvIO::setFilePointer(int64 offset, libebml::seek_mode mode) {
    if (!m_stream) {
        return;
    }
    if (!IsKnownMode(mode)) {
        throw mkv::kUnknownSeekModeError;
    }
    LARGE_INTEGER move{};
    move.QuadPart = offset;
    ULARGE_INTEGER position{};
    if (FAILED(m_stream->Seek(move, static_cast<DWORD>(mode), &position))) {
        throw mkv::kSeekFailedError;
    }
}

uint64 CMkvIO::getFilePointer() {
    if (!m_stream) {
        return 0;
    }
    ULARGE_INTEGER position{};
    return SUCCEEDED(m_stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_CUR, &position)) ? position.QuadPart : 0;
}
