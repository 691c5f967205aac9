#include "tests/matroska_muxer/watched_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/support/watchdog.h"

using namespace test_support;

namespace {

constexpr size_t kHeadBytes = 2048; // with room for all that is patched

} // namespace

void WatchedStream::Hold() {
    const std::lock_guard lock(m_lock);
    m_holds = true;
}

bool WatchedStream::WaitUntilHeld() {
    std::unique_lock lock(m_lock);
    return m_changed.wait_for(lock, kWatchdog, [this] { return m_isHeld; });
}

void WatchedStream::LetGo() {
    const std::lock_guard lock(m_lock);
    m_holds = false;
    m_changed.notify_all();
}

void WatchedStream::WaitWhileHeld() {
    std::unique_lock lock(m_lock);
    if (m_holds) {
        m_isHeld = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_holds; });
    }
}

HRESULT WatchedStream::Write(const void* buffer, ULONG size, ULONG* written) {
    WaitWhileHeld();
    const auto* const bytes = static_cast<const BYTE*>(buffer);
    const bool isInHead = m_position + size <= m_head.size();
    if (m_position != m_end && !isInHead) {
        ADD_FAILURE() << size << " bytes at " << m_position << " of " << m_end;
        return STG_E_INVALIDFUNCTION;
    }
    if (isInHead) {
        std::memcpy(m_head.data() + m_position, bytes, size);
    }
    if (m_position == m_end) {
        const size_t toHead = std::min<size_t>(size, kHeadBytes - m_head.size());
        m_head.insert(m_head.end(), bytes, bytes + toHead);
        m_tail.insert(m_tail.end(), bytes, bytes + size);
        m_end += size;
        TakeCompleteElements();
    }
    m_position += size;
    if (written != nullptr) {
        *written = size;
    }
    return S_OK;
}

// The Segment is entered, everything else is taken whole.
void WatchedStream::TakeCompleteElements() {
    size_t taken = 0;
    for (;;) {
        const ByteView rest(m_tail.data() + taken, m_tail.size() - taken);
        const auto id = ReadEbmlId(rest);
        const auto size = id ? ReadEbmlSize(rest.subspan(id->length)) : std::nullopt;
        if (!size) {
            break;
        }
        const size_t headBytes = id->length + size->length;
        const size_t whole = id->value == ebml_id::kSegment ? headBytes : headBytes + size->value;
        if (whole > rest.size()) {
            break;
        }
        if (id->value == ebml_id::kSegment) {
            m_segmentData = m_tailBegin + taken + whole;
        } else {
            m_onElement(rest.first(whole), m_tailBegin + taken);
        }
        taken += whole;
    }
    m_tail.erase(m_tail.begin(), m_tail.begin() + static_cast<std::ptrdiff_t>(taken));
    m_tailBegin += taken;
}

HRESULT WatchedStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) {
    const UINT64 from = origin == STREAM_SEEK_SET ? 0 : origin == STREAM_SEEK_CUR ? m_position : m_end;
    m_position = from + static_cast<UINT64>(move.QuadPart);
    if (newPosition != nullptr) {
        newPosition->QuadPart = m_position;
    }
    return S_OK;
}
