// NullStream: an IStream that forgets what is written and keeps only position, size and counts, so that the sink
// costs next to nothing and what is measured is the muxer.
//
// Units: bytes. Owner: the measurement; references are counted, none deletes it.
// Threads: one caller at a time, as the muxer's writer lock grants; the counts from any. Errors: none.
#pragma once

#include <atomic>

#include "tests/support/bare_stream.h"

namespace bench {

class NullStream : public test_support::BareStream {
  public:
    NullStream() : BareStream("a null stream") {}

    [[nodiscard]] UINT64 Size() const { return m_size; } // the end of the last byte written

    // ISequentialStream
    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG size, ULONG* read) override;
    HRESULT STDMETHODCALLTYPE Write(const void* data, ULONG size, ULONG* written) override;
    // IStream
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override;

  protected:
    ~NullStream() = default; // deleted only as what it is

    [[nodiscard]] UINT64 Position() const { return m_position; }

    // Before each write, on the writing thread.
    virtual void OnWrite() {}

  private:
    UINT64 m_position = 0;
    std::atomic<UINT64> m_size{0};
};

class PlainNullStream final : public NullStream {};

} // namespace bench
