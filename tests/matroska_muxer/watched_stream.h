// WatchedStream: an IStream for files that nobody has room for: it keeps the head, hands each complete element of the
// Segment to the test, and forgets it.
//
// Units: bytes. Owner: the test; references are counted, none deletes it. Threads: one caller at a time, and the test's
// in Hold, WaitUntilHeld and LetGo. Errors: a write that is neither at the end nor in the head fails the running test.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

#include "tests/support/bare_stream.h"
#include "tests/support/ebml_reader.h"
#include "win/platform.h"

class WatchedStream final : public test_support::BareStream {
  public:
    // The element's bytes and where it begins in the file. Called on the writer's thread.
    using OnElement = std::function<void(test_support::ByteView bytes, UINT64 offset)>;

    explicit WatchedStream(OnElement onElement) : BareStream("a watched stream"), m_onElement(std::move(onElement)) {}

    // The beginning of the file as it stands now.
    [[nodiscard]] test_support::ByteView Head() const { return m_head; }
    [[nodiscard]] UINT64 Size() const { return m_end; }
    // Where the Segment's data begins.
    [[nodiscard]] UINT64 SegmentData() const { return m_segmentData; }

    // From now on a write waits until LetGo, as on a disk that has gone to sleep.
    void Hold();
    // False when no write has come in time.
    [[nodiscard]] bool WaitUntilHeld();
    void LetGo();

    // ISequentialStream
    HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG size, ULONG* written) override;
    // IStream
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) override;
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return S_OK; }

  private:
    void WaitWhileHeld();
    void TakeCompleteElements();

    const OnElement m_onElement;

    std::vector<BYTE> m_head;
    std::vector<BYTE> m_tail; // from m_tailBegin to m_end
    UINT64 m_tailBegin = 0;
    UINT64 m_end = 0;
    UINT64 m_position = 0;
    UINT64 m_segmentData = 0;

    std::mutex m_lock; // guards both below
    std::condition_variable m_changed;
    bool m_holds = false;
    bool m_isHeld = false;
};
