// MemoryStream: an IStream over memory with a file's semantics, which records every call and fails on demand.
//
// Units: bytes. Owner: the test; references are counted, none deletes it.
// Threads: any; one lock around each call.
// Errors: the HRESULTs asked for with FailNth and FailFrom; STG_E_MEDIUMFULL above the capacity. A Read that fails
// leaves the count as it was, and a Seek that fails puts a wrong position: neither may be believed.
#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "tests/support/reference_count.h"
#include "win/platform.h"

namespace test_support {

enum class StreamOperation { Read, Write, Seek, SetSize, Stat, Other };

// A write that was made while writes were kept.
struct KeptWrite {
    UINT64 position;
    std::vector<BYTE> bytes; // all that were given
    UINT64 taken;            // so many of them are in the stream
    HRESULT result;

    [[nodiscard]] bool IsWhole() const { return SUCCEEDED(result) && taken == bytes.size(); }
};

struct StreamCall {
    StreamOperation operation;
    UINT64 position; // Read, Write: where it began. Seek: where it led to; the old position if it failed
    UINT64 size;     // Read, Write: the bytes asked for. SetSize: the new size
    INT64 move;      // Seek: the offset given
    DWORD origin;    // Seek: STREAM_SEEK_SET, _CUR or _END as given
    HRESULT result;
};

class MemoryStream final : public IStream {
  public:
    // With an outer object, references count there too, and it answers QueryInterface.
    explicit MemoryStream(IUnknown* outer = nullptr);
    ~MemoryStream() = default;

    // The n-th call (from 1, counted from now on) of that kind fails; nothing else happens in it.
    void FailNth(StreamOperation operation, UINT64 n, HRESULT result);
    // So do all calls of that kind from the n-th on.
    void FailFrom(StreamOperation operation, UINT64 n, HRESULT result);
    void ClearFailures();
    // The next write keeps only so many bytes, and answers so.
    void AnswerNextWrite(HRESULT result, ULONG keptBytes);
    // So does the n-th one (from 1, counted from now on), or each from then on: so many of a hundred of its bytes.
    void AnswerWrites(UINT64 n, bool onlyOnce, HRESULT result, unsigned keptPercent);
    // Growing beyond this many bytes fails with STG_E_MEDIUMFULL, as a full disk does.
    void SetCapacity(UINT64 bytes);
    // From now on, what each write was given is kept.
    void KeepWrites();
    [[nodiscard]] std::vector<KeptWrite> Writes() const;
    // Switches the list of calls off and on; the counters of FailNth go on.
    void SetRecording(bool record);

    // Called at the begin of every Read, Write, Seek, SetSize, Commit and Stat, on the caller's thread and outside the
    // lock. Set before the stream is used.
    void OnEveryCall(std::function<void()> hook) { m_everyCall = std::move(hook); }

    void SetBytes(std::vector<BYTE> bytes); // and goes to the start
    [[nodiscard]] std::vector<BYTE> Bytes() const;
    [[nodiscard]] UINT64 Position() const;
    [[nodiscard]] std::vector<StreamCall> Calls() const;
    [[nodiscard]] std::vector<StreamCall> Calls(StreamOperation operation) const;
    void ClearCalls();
    [[nodiscard]] LONG References() const { return m_references.Count(); }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    // ISequentialStream
    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG size, ULONG* read) override;
    HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG size, ULONG* written) override;
    // IStream
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) override;
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override;
    HRESULT STDMETHODCALLTYPE CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* read,
                                     ULARGE_INTEGER* written) override;
    HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override;
    HRESULT STDMETHODCALLTYPE Revert() override;
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, DWORD type) override;
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, DWORD type) override;
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD flags) override;
    HRESULT STDMETHODCALLTYPE Clone(IStream** clone) override;

  private:
    struct FailureRule {
        StreamOperation operation;
        UINT64 callsUntil; // calls of that kind left before the rule applies
        bool onlyOnce;
        HRESULT result;
    };

    struct WriteAnswer {
        HRESULT result;
        ULONG keptBytes;
    };

    struct WriteRule {
        UINT64 callsUntil; // writes left before it applies
        bool onlyOnce;
        HRESULT result;
        unsigned keptPercent;
    };

    void AddRule(StreamOperation operation, UINT64 n, bool onlyOnce, HRESULT result);
    HRESULT FailureDue(StreamOperation operation);
    HRESULT Record(const StreamCall& call);
    std::optional<WriteAnswer> AnswerDue(ULONG size);
    HRESULT WriteAtPosition(const BYTE* bytes, ULONG size);
    HRESULT MoveTo(INT64 move, DWORD origin);

    IUnknown* const m_outer; // not owned; null when this object is one of its own
    ReferenceCount m_references{"a memory stream"};

    std::function<void()> m_everyCall = [] {};

    mutable std::mutex m_lock; // guards all below
    std::vector<BYTE> m_bytes;
    UINT64 m_position = 0;
    UINT64 m_capacity;
    bool m_recording = true;
    std::vector<StreamCall> m_calls;
    std::vector<FailureRule> m_rules;
    std::optional<WriteAnswer> m_nextWrite;
    std::optional<WriteRule> m_writeRule;
    bool m_keepsWrites = false;
    std::vector<KeptWrite> m_writes;
};

} // namespace test_support
