#include "mkv/mkv_io.h"

#include <algorithm>
#include <limits>

#include "log/logger.h"
#include "mkv/writer_errors.h"

namespace {

// The modes are passed on as they are.
static_assert(libebml::seek_beginning == static_cast<int>(STREAM_SEEK_SET));
static_assert(libebml::seek_current == static_cast<int>(STREAM_SEEK_CUR));
static_assert(libebml::seek_end == static_cast<int>(STREAM_SEEK_END));

bool IsKnownMode(libebml::seek_mode mode) {
    return mode == libebml::seek_beginning || mode == libebml::seek_current || mode == libebml::seek_end;
}

void LogSlowWrite(INT64 took, ULONG bytes) {
    constexpr INT64 kSlow = 10'000'000; // a second
    constexpr INT64 kUnitsPerMs = 10'000;
    if (took <= kSlow) {
        return;
    }
    LogIfPossible([=] {
        g_Logger << OLESTR("CMkvIO::write took ms=") << took / kUnitsPerMs << OLESTR(" bytes=")
                 << static_cast<INT64>(bytes) << OLESTR("\r\n");
    });
}

ULONG ToStreamSize(size_t size) {
    return static_cast<ULONG>(size & std::numeric_limits<ULONG>::max());
}

} // namespace

void CMkvIO::setStream(IStream* stream) {
    m_stream.Reset();
    m_stream = stream;
    m_firstLoss = S_OK;
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
    ULONG written = asked; // for streams that do not say
    m_figures.begin();
    m_lastWriteResult = m_stream->Write(buffer, asked, &written);
    LogSlowWrite(m_figures.end(SUCCEEDED(m_lastWriteResult) ? std::min(written, asked) : 0), asked);
    m_isLastWriteWhole = SUCCEEDED(m_lastWriteResult) && written == asked;
    if (!m_isLastWriteWhole && m_firstLoss == S_OK) {
        m_firstLoss = FAILED(m_lastWriteResult) ? m_lastWriteResult : STG_E_WRITEFAULT;
    }
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
    return position().value_or(0);
}

std::optional<uint64> CMkvIO::position() {
    ULARGE_INTEGER position{};
    if (!m_stream || FAILED(m_stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_CUR, &position))) {
        return std::nullopt;
    }
    return position.QuadPart;
}

// Only a stream that held more before is told: not every stream takes the call.
void CMkvIO::cutOffAt(uint64 end) {
    const std::optional<uint64> size = streamSize();
    if (size && *size > end) {
        ULARGE_INTEGER newSize{};
        newSize.QuadPart = end;
        (void)m_stream->SetSize(newSize);
    }
}

// Streams that cannot tell about themselves may still find their end.
std::optional<uint64> CMkvIO::streamSize() {
    if (!m_stream) {
        return std::nullopt;
    }
    STATSTG facts{};
    if (SUCCEEDED(m_stream->Stat(&facts, STATFLAG_NONAME))) {
        return facts.cbSize.QuadPart;
    }
    ULARGE_INTEGER end{};
    if (FAILED(m_stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_END, &end))) {
        return std::nullopt;
    }
    return end.QuadPart;
}
