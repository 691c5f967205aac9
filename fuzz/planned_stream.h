// PlannedStream: a file in memory that fails where it is told to, and remembers what each write offered and answered.
//
// Units: bytes. Owner: the fuzzer; references are counted, none deletes it. Threads: any; one lock around each call.
// Errors: as planned.
#pragma once

#include <mutex>
#include <vector>

#include "tests/support/bare_stream.h"
#include "tests/support/memory_stream.h"

namespace fuzz {

struct PlannedFault {
    enum class Kind { Error, Full, Short, ShortError };

    test_support::StreamOperation operation = test_support::StreamOperation::Write;
    std::uint32_t first = 0; // the call of that kind that fails, from 0
    std::uint32_t count = 1; // and how many there are that do
    Kind kind = Kind::Error;
    std::uint32_t keptBytes = 0; // of a short write
};

struct RecordedWrite {
    std::uint64_t position = 0;
    std::vector<BYTE> bytes; // all that were offered
    bool isTaken = false;    // it said that it took them all
    bool isTorn = false;     // it took some
};

class PlannedStream final : public test_support::BareStream {
  public:
    PlannedStream() : BareStream("a planned stream") {}
    ~PlannedStream() = default;

    // Forgets what was, but for the bytes.
    void BeginRun(std::vector<PlannedFault> faults);
    void ForgetWrites();
    [[nodiscard]] std::vector<BYTE> Bytes() const { return m_memory.Bytes(); }
    [[nodiscard]] const std::vector<RecordedWrite>& Writes() const { return m_writes; }
    // How many calls of that kind failed as planned.
    [[nodiscard]] size_t Failed(test_support::StreamOperation operation) const;
    [[nodiscard]] bool HasFailed() const;

    // ISequentialStream
    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG size, ULONG* read) override;
    HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG size, ULONG* written) override;
    // IStream
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) override;
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override;
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD flags) override;

  private:
    static constexpr size_t kOperations = static_cast<size_t>(test_support::StreamOperation::Other) + 1;

    // The fault that this call of that kind meets, or null; counts the call.
    [[nodiscard]] const PlannedFault* FaultOf(test_support::StreamOperation operation);

    mutable std::mutex m_lock; // guards all below
    test_support::MemoryStream m_memory;
    std::vector<PlannedFault> m_faults;
    std::uint32_t m_calls[kOperations] = {};
    size_t m_failed[kOperations] = {};
    std::vector<RecordedWrite> m_writes;
};

} // namespace fuzz
