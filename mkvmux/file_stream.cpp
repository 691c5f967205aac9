#include "mkvmux/file_stream.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <mutex>

#include "dshow/com_guard.h"
#include "mkvmux/text.h"

namespace mkvmux {

CFileStream::CFileStream(LPUNKNOWN outer) : CUnknown(L"FileStream", outer) {}

HRESULT CFileStream::Create(const std::wstring& path, bool overwrite) {
    win::FileHandle file(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                     overwrite ? CREATE_ALWAYS : CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    const HRESULT hr = file ? S_OK : LastResult();
    Take(std::move(file), path);
    const win::LockGuard lock(m_lock);
    m_created = hr;
    return hr;
}

void CFileStream::Take(win::FileHandle file, const std::wstring& path) {
    const win::LockGuard lock(m_lock);
    m_file = std::move(file);
    m_path = path;
    m_isPipe = false;
    m_position = 0;
    m_handlePosition.reset();
}

void CFileStream::TakePipe(win::FileHandle pipe) {
    Take(std::move(pipe), {});
    const win::LockGuard lock(m_lock);
    m_isPipe = true;
}

STDMETHODIMP CFileStream::NonDelegatingQueryInterface(REFIID iid, void** object) {
    if (iid == IID_IStream || iid == IID_ISequentialStream) {
        return GetInterface(static_cast<IStream*>(this), object);
    }
    return CUnknown::NonDelegatingQueryInterface(iid, object);
}

STDMETHODIMP CFileStream::Read(void* buffer, ULONG size, ULONG* read) noexcept {
    if (read != nullptr) {
        *read = 0;
    }
    if (buffer == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    const win::LockGuard lock(m_lock);
    DWORD got = 0;
    if (!BringHandle() || ReadFile(m_file.Get(), buffer, size, &got, nullptr) == FALSE) {
        return FailedCall();
    }
    m_position += got;
    m_handlePosition = m_position;
    if (read != nullptr) {
        *read = got;
    }
    return got == size ? S_OK : S_FALSE;
}

STDMETHODIMP CFileStream::Write(const void* data, ULONG size, ULONG* written) noexcept {
    if (written != nullptr) {
        *written = 0;
    }
    if (data == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    TellFirstUse();
    ULONG done = 0;
    HRESULT hr = S_OK;
    {
        const win::LockGuard lock(m_lock);
        hr = WriteAll(static_cast<const BYTE*>(data), size, done);
    }
    if (written != nullptr) {
        *written = done;
    }
    return Report(hr);
}

// The lock is held.
HRESULT CFileStream::WriteAll(const BYTE* data, ULONG size, ULONG& written) {
    if (FAILED(m_created)) {
        return m_created;
    }
    while (written < size) {
        DWORD count = 0;
        if (!BringHandle() || WriteFile(m_file.Get(), data + written, size - written, &count, nullptr) == FALSE) {
            return FailedCall();
        }
        if (count == 0) {
            return HRESULT_FROM_WIN32(ERROR_WRITE_FAULT);
        }
        written += count;
        m_position += count;
        m_handlePosition = m_position;
        m_writtenEnd = std::max(m_writtenEnd.load(), m_position);
    }
    return S_OK;
}

// The lock is held. Reads and writes carry no position of their own: on some systems that makes each of them several
// times as dear. A pipe stands where the next byte goes.
bool CFileStream::BringHandle() {
    if (m_isPipe || m_handlePosition == m_position) {
        return true;
    }
    LARGE_INTEGER position{};
    position.QuadPart = static_cast<LONGLONG>(m_position);
    if (SetFilePointerEx(m_file.Get(), position, nullptr, FILE_BEGIN) == FALSE) {
        return false;
    }
    m_handlePosition = m_position;
    return true;
}

// The lock is held. Where the handle stands now is anybody's guess.
HRESULT CFileStream::FailedCall() {
    const HRESULT hr = LastResult();
    m_handlePosition.reset();
    return hr;
}

STDMETHODIMP CFileStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) noexcept {
    TellFirstUse();
    HRESULT hr = S_OK;
    {
        const win::LockGuard lock(m_lock);
        if (m_isPipe) {
            return STG_E_INVALIDFUNCTION;
        }
        hr = MovePosition(move.QuadPart, origin);
        if (position != nullptr) {
            position->QuadPart = m_position;
        }
    }
    return Report(hr);
}

// The lock is held. A failed move leaves the position where it was.
HRESULT CFileStream::MovePosition(INT64 move, DWORD origin) {
    UINT64 base = 0;
    if (origin == STREAM_SEEK_CUR) {
        base = m_position;
    } else if (origin == STREAM_SEEK_END) {
        if (const HRESULT hr = FileSize(base); FAILED(hr)) {
            return hr;
        }
    } else if (origin != STREAM_SEEK_SET) {
        return STG_E_INVALIDFUNCTION;
    }
    constexpr UINT64 kMaxPosition = static_cast<UINT64>(std::numeric_limits<INT64>::max());
    const UINT64 distance = move < 0 ? UINT64{0} - static_cast<UINT64>(move) : static_cast<UINT64>(move);
    if (move < 0 ? distance > base : distance > kMaxPosition - base) {
        return HRESULT_FROM_WIN32(ERROR_NEGATIVE_SEEK);
    }
    m_position = move < 0 ? base - distance : base + distance;
    return S_OK;
}

HRESULT CFileStream::FileSize(UINT64& size) const {
    LARGE_INTEGER bytes{};
    if (GetFileSizeEx(m_file.Get(), &bytes) == FALSE) {
        return LastResult();
    }
    size = static_cast<UINT64>(bytes.QuadPart);
    return S_OK;
}

STDMETHODIMP CFileStream::SetSize(ULARGE_INTEGER size) noexcept {
    HRESULT hr = S_OK;
    {
        const win::LockGuard lock(m_lock);
        LARGE_INTEGER end{};
        end.QuadPart = static_cast<LONGLONG>(size.QuadPart);
        m_handlePosition.reset();
        if (SetFilePointerEx(m_file.Get(), end, nullptr, FILE_BEGIN) == FALSE || SetEndOfFile(m_file.Get()) == FALSE) {
            hr = LastResult();
        }
    }
    return Report(hr);
}

STDMETHODIMP CFileStream::Commit(DWORD) noexcept {
    const win::LockGuard lock(m_lock);
    return Report(FlushFileBuffers(m_file.Get()) == FALSE ? LastResult() : S_OK);
}

STDMETHODIMP CFileStream::Stat(STATSTG* statistics, DWORD flags) noexcept {
    if (statistics == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    *statistics = {};
    const win::LockGuard lock(m_lock);
    UINT64 size = 0;
    if (const HRESULT hr = FileSize(size); FAILED(hr)) {
        return hr;
    }
    if ((flags & STATFLAG_NONAME) == 0) {
        const size_t bytes = (m_path.size() + 1) * sizeof(WCHAR);
        statistics->pwcsName = static_cast<LPOLESTR>(CoTaskMemAlloc(bytes));
        if (statistics->pwcsName == nullptr) {
            return E_OUTOFMEMORY;
        }
        std::memcpy(statistics->pwcsName, m_path.c_str(), bytes);
    }
    statistics->type = STGTY_STREAM;
    statistics->cbSize.QuadPart = size;
    statistics->grfMode = STGM_READWRITE | STGM_SHARE_DENY_WRITE;
    GetFileTime(m_file.Get(), &statistics->ctime, &statistics->atime, &statistics->mtime);
    return S_OK;
}

STDMETHODIMP CFileStream::Revert() noexcept {
    return S_OK; // nothing is transacted, so nothing is left to take back
}

STDMETHODIMP CFileStream::CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) noexcept {
    return E_NOTIMPL;
}

STDMETHODIMP CFileStream::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept {
    return STG_E_INVALIDFUNCTION;
}

STDMETHODIMP CFileStream::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept {
    return STG_E_INVALIDFUNCTION;
}

STDMETHODIMP CFileStream::Clone(IStream** stream) noexcept {
    if (stream == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    *stream = nullptr;
    return E_NOTIMPL;
}

// What the handler throws is memory that ran out: the next call meets the same.
void CFileStream::TellFirstUse() {
    if (m_onFirstUse && !m_isUsed.exchange(true)) {
        (void)ComGuard([this] {
            m_onFirstUse();
            return S_OK;
        });
    }
}

// Keeps and reports the first failure; no lock is held, since the handler may do what it likes.
HRESULT CFileStream::Report(HRESULT hr) {
    HRESULT none = S_OK;
    if (FAILED(hr) && m_firstFailure.compare_exchange_strong(none, hr) && m_onFailure) {
        m_onFailure(hr);
    }
    return hr;
}

} // namespace mkvmux
