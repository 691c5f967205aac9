#include "tests/support/memory_stream.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "tests/support/system_code.h"

namespace test_support {

namespace {

// Far above what a test writes: a runaway seek must not take the machine's memory.
constexpr UINT64 kDefaultCapacityBytes = UINT64{1} << 30;
// What a failed seek leaves in its result, which nobody may believe.
constexpr UINT64 kWrongPosition = 0x0123456789abcdef;

} // namespace

MemoryStream::MemoryStream(IUnknown* outer) : m_outer(outer), m_capacity(kDefaultCapacityBytes) {}

void MemoryStream::AddRule(StreamOperation operation, UINT64 n, bool onlyOnce, HRESULT result) {
    const std::lock_guard guard(m_lock);
    m_rules.push_back({operation, n == 0 ? 0 : n - 1, onlyOnce, result});
}

void MemoryStream::FailNth(StreamOperation operation, UINT64 n, HRESULT result) {
    AddRule(operation, n, true, result);
}

void MemoryStream::FailFrom(StreamOperation operation, UINT64 n, HRESULT result) {
    AddRule(operation, n, false, result);
}

void MemoryStream::ClearFailures() {
    const std::lock_guard guard(m_lock);
    m_rules.clear();
    m_writeRule.reset();
}

void MemoryStream::AnswerWrites(UINT64 n, bool onlyOnce, HRESULT result, unsigned keptPercent) {
    const std::lock_guard guard(m_lock);
    m_writeRule = WriteRule{n == 0 ? 0 : n - 1, onlyOnce, result, keptPercent};
}

void MemoryStream::KeepWrites() {
    const std::lock_guard guard(m_lock);
    m_keepsWrites = true;
    m_writes.clear();
}

std::vector<KeptWrite> MemoryStream::Writes() const {
    const std::lock_guard guard(m_lock);
    return m_writes;
}

void MemoryStream::AnswerNextWrite(HRESULT result, ULONG keptBytes) {
    const std::lock_guard guard(m_lock);
    m_nextWrite = WriteAnswer{result, keptBytes};
}

void MemoryStream::SetCapacity(UINT64 bytes) {
    const std::lock_guard guard(m_lock);
    m_capacity = bytes;
}

void MemoryStream::SetRecording(bool record) {
    const std::lock_guard guard(m_lock);
    m_recording = record;
}

void MemoryStream::SetBytes(std::vector<BYTE> bytes) {
    const std::lock_guard guard(m_lock);
    m_bytes = std::move(bytes);
    m_position = 0;
}

std::vector<BYTE> MemoryStream::Bytes() const {
    const std::lock_guard guard(m_lock);
    return m_bytes;
}

UINT64 MemoryStream::Position() const {
    const std::lock_guard guard(m_lock);
    return m_position;
}

std::vector<StreamCall> MemoryStream::Calls() const {
    const std::lock_guard guard(m_lock);
    return m_calls;
}

std::vector<StreamCall> MemoryStream::Calls(StreamOperation operation) const {
    std::vector<StreamCall> calls = Calls();
    std::erase_if(calls, [operation](const StreamCall& call) { return call.operation != operation; });
    return calls;
}

void MemoryStream::ClearCalls() {
    const std::lock_guard guard(m_lock);
    m_calls.clear();
}

// Every rule of that kind counts the call; the first one that applies decides. S_OK when none does.
HRESULT MemoryStream::FailureDue(StreamOperation operation) {
    HRESULT due = S_OK;
    for (auto rule = m_rules.begin(); rule != m_rules.end();) {
        if (rule->operation != operation) {
            ++rule;
        } else if (rule->callsUntil > 0) {
            --rule->callsUntil;
            ++rule;
        } else {
            due = due == S_OK ? rule->result : due;
            rule = rule->onlyOnce ? m_rules.erase(rule) : rule + 1;
        }
    }
    return due;
}

HRESULT MemoryStream::Record(const StreamCall& call) {
    if (m_recording) {
        m_calls.push_back(call);
    }
    return call.result;
}

HRESULT MemoryStream::QueryInterface(REFIID iid, void** object) {
    if (m_outer != nullptr) {
        return m_outer->QueryInterface(iid, object);
    }
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_ISequentialStream && iid != IID_IStream) {
        return E_NOINTERFACE;
    }
    *object = static_cast<IStream*>(this);
    AddRef();
    return S_OK;
}

ULONG MemoryStream::AddRef() {
    if (m_outer != nullptr) {
        m_outer->AddRef();
    }
    return m_references.Add();
}

ULONG MemoryStream::Release() {
    const ULONG left = m_references.Release();
    if (m_outer != nullptr) {
        m_outer->Release();
    }
    return left;
}

HRESULT MemoryStream::Read(void* buffer, ULONG size, ULONG* read) {
    m_everyCall();
    const SystemCode notTheProduct;
    const std::lock_guard guard(m_lock);
    const UINT64 start = m_position;
    HRESULT hr = FailureDue(StreamOperation::Read);
    if (SUCCEEDED(hr) && buffer == nullptr) {
        hr = STG_E_INVALIDPOINTER;
    }
    if (SUCCEEDED(hr) && read != nullptr) { // a call that fails may leave it as it was
        *read = 0;
    }
    if (SUCCEEDED(hr) && start < m_bytes.size()) {
        const auto count = static_cast<ULONG>(std::min<UINT64>(size, m_bytes.size() - start));
        if (count > 0) {
            std::memcpy(buffer, m_bytes.data() + start, count);
        }
        m_position += count;
        if (read != nullptr) {
            *read = count;
        }
    }
    return Record({StreamOperation::Read, start, size, 0, 0, hr});
}

std::optional<MemoryStream::WriteAnswer> MemoryStream::AnswerDue(ULONG size) {
    std::optional<WriteAnswer> answer = std::exchange(m_nextWrite, std::nullopt);
    if (m_writeRule && m_writeRule->callsUntil > 0) {
        --m_writeRule->callsUntil;
    } else if (m_writeRule) {
        answer = WriteAnswer{m_writeRule->result, static_cast<ULONG>(UINT64{size} * m_writeRule->keptPercent / 100)};
        if (m_writeRule->onlyOnce) {
            m_writeRule.reset();
        }
    }
    return answer;
}

HRESULT MemoryStream::WriteAtPosition(const BYTE* bytes, ULONG size) {
    if (bytes == nullptr && size > 0) {
        return STG_E_INVALIDPOINTER;
    }
    if (size == 0) {
        return S_OK;
    }
    if (m_position > m_capacity || size > m_capacity - m_position) {
        return STG_E_MEDIUMFULL;
    }
    const UINT64 end = m_position + size;
    if (end > m_bytes.size()) {
        m_bytes.resize(end); // a gap left by a seek beyond the end reads as zeros
    }
    std::memcpy(m_bytes.data() + m_position, bytes, size);
    m_position = end;
    return S_OK;
}

HRESULT MemoryStream::Write(const void* buffer, ULONG size, ULONG* written) {
    m_everyCall();
    const SystemCode notTheProduct;
    const std::lock_guard guard(m_lock);
    if (written != nullptr) {
        *written = 0;
    }
    const UINT64 start = m_position;
    const std::optional<WriteAnswer> answer = AnswerDue(size);
    const ULONG kept = answer ? std::min(answer->keptBytes, size) : size;
    HRESULT hr = FailureDue(StreamOperation::Write);
    if (SUCCEEDED(hr)) {
        hr = WriteAtPosition(static_cast<const BYTE*>(buffer), kept);
    }
    if (SUCCEEDED(hr) && written != nullptr) {
        *written = kept;
    }
    const UINT64 taken = m_position - start;
    if (SUCCEEDED(hr) && answer) {
        hr = answer->result;
    }
    if (m_keepsWrites) {
        const auto* const bytes = static_cast<const BYTE*>(buffer);
        m_writes.push_back({start, std::vector<BYTE>(bytes, bytes + size), taken, hr});
    }
    return Record({StreamOperation::Write, start, size, 0, 0, hr});
}

HRESULT MemoryStream::MoveTo(INT64 move, DWORD origin) {
    UINT64 base = 0;
    switch (origin) {
    case STREAM_SEEK_SET:
        break;
    case STREAM_SEEK_CUR:
        base = m_position;
        break;
    case STREAM_SEEK_END:
        base = m_bytes.size();
        break;
    default:
        return STG_E_INVALIDFUNCTION;
    }
    const bool beforeStart = move < 0 && UINT64{0} - static_cast<UINT64>(move) > base;
    if (beforeStart) {
        return STG_E_INVALIDFUNCTION;
    }
    m_position = base + static_cast<UINT64>(move);
    return S_OK;
}

HRESULT MemoryStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) {
    m_everyCall();
    const SystemCode notTheProduct;
    const std::lock_guard guard(m_lock);
    HRESULT hr = FailureDue(StreamOperation::Seek);
    if (SUCCEEDED(hr)) {
        hr = MoveTo(move.QuadPart, origin);
    }
    if (newPosition != nullptr) {
        newPosition->QuadPart = SUCCEEDED(hr) ? m_position : kWrongPosition;
    }
    return Record({StreamOperation::Seek, m_position, 0, move.QuadPart, origin, hr});
}

HRESULT MemoryStream::SetSize(ULARGE_INTEGER size) {
    m_everyCall();
    const SystemCode notTheProduct;
    const std::lock_guard guard(m_lock);
    HRESULT hr = FailureDue(StreamOperation::SetSize);
    if (SUCCEEDED(hr) && size.QuadPart > m_capacity) {
        hr = STG_E_MEDIUMFULL;
    }
    if (SUCCEEDED(hr)) {
        m_bytes.resize(size.QuadPart);
    }
    return Record({StreamOperation::SetSize, m_position, size.QuadPart, 0, 0, hr});
}

HRESULT MemoryStream::CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) {
    return E_NOTIMPL;
}

HRESULT MemoryStream::Commit(DWORD) {
    m_everyCall();
    const SystemCode notTheProduct;
    const std::lock_guard guard(m_lock);
    return Record({StreamOperation::Other, m_position, 0, 0, 0, FailureDue(StreamOperation::Other)});
}

HRESULT MemoryStream::Revert() {
    return E_NOTIMPL;
}

HRESULT MemoryStream::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) {
    return STG_E_INVALIDFUNCTION;
}

HRESULT MemoryStream::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) {
    return STG_E_INVALIDFUNCTION;
}

HRESULT MemoryStream::Stat(STATSTG* stat, DWORD) {
    if (stat == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    m_everyCall();
    const SystemCode notTheProduct;
    const std::lock_guard guard(m_lock);
    *stat = {};
    const HRESULT hr = FailureDue(StreamOperation::Stat);
    if (SUCCEEDED(hr)) {
        stat->type = STGTY_STREAM;
        stat->cbSize.QuadPart = m_bytes.size();
    }
    return Record({StreamOperation::Stat, m_position, 0, 0, 0, hr});
}

HRESULT MemoryStream::Clone(IStream** clone) {
    if (clone == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    *clone = nullptr;
    return E_NOTIMPL;
}

} // namespace test_support
