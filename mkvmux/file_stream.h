// CFileStream: IStream over a file on disk, of any size, or over a pipe; neither buffered nor transacted.
//
// Units: bytes. Owner: the outer object when there is one (the pin that offers the stream), else its references.
// Threads: any; one call at a time gets through. Reads and writes carry their position with them.
// Errors: HRESULT_FROM_WIN32 of what the system said; the first failed write or seek is kept and reported.
#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>

#include "dshow/unknown.h"
#include "win/critical_section.h"
#include "win/handle.h"
#include "win/platform.h"

namespace mkvmux {

class CFileStream : public CUnknown, public IStream {
  public:
    using FailureHandler = std::function<void(HRESULT)>;
    using FirstUseHandler = std::function<void()>;

    explicit CFileStream(LPUNKNOWN outer);

    // An existing file is an error (ERROR_FILE_EXISTS) unless it may be overwritten.
    HRESULT Create(const std::wstring& path, bool overwrite);
    // A file that is open already; it is closed with the stream.
    void Take(win::FileHandle file, const std::wstring& path);
    // One that takes bytes and cannot seek: a seek is refused, which is no failure.
    void TakePipe(win::FileHandle pipe);
    // Called once, at the first write or seek that fails, on the thread of the caller that met it.
    void SetFailureHandler(FailureHandler handler) { m_onFailure = std::move(handler); }
    // Called once, at the first write or seek, on the thread of the caller, before anything is done: it may create the
    // file.
    void SetFirstUseHandler(FirstUseHandler handler) { m_onFirstUse = std::move(handler); }
    // S_OK as long as all went well.
    [[nodiscard]] HRESULT FirstFailure() const { return m_firstFailure; }
    // The end of the last byte written, for those who show progress.
    [[nodiscard]] UINT64 WrittenEnd() const { return m_writtenEnd; }

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID iid, void** object) override;

    // ISequentialStream
    STDMETHODIMP Read(void* buffer, ULONG size, ULONG* read) noexcept override;
    STDMETHODIMP Write(const void* data, ULONG size, ULONG* written) noexcept override;

    // IStream
    STDMETHODIMP Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) noexcept override;
    STDMETHODIMP SetSize(ULARGE_INTEGER size) noexcept override;
    STDMETHODIMP CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* read,
                        ULARGE_INTEGER* written) noexcept override;
    STDMETHODIMP Commit(DWORD flags) noexcept override;
    STDMETHODIMP Revert() noexcept override;
    STDMETHODIMP LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, DWORD kind) noexcept override;
    STDMETHODIMP UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, DWORD kind) noexcept override;
    STDMETHODIMP Stat(STATSTG* statistics, DWORD flags) noexcept override;
    STDMETHODIMP Clone(IStream** stream) noexcept override;

  private:
    bool BringHandle() QRX_REQUIRES(m_lock);
    HRESULT FailedCall() QRX_REQUIRES(m_lock);
    HRESULT WriteAll(const BYTE* data, ULONG size, ULONG& written) QRX_REQUIRES(m_lock);
    HRESULT MovePosition(INT64 move, DWORD origin) QRX_REQUIRES(m_lock);
    HRESULT FileSize(UINT64& size) const;
    HRESULT Report(HRESULT hr);
    void TellFirstUse();

    win::CriticalSection m_lock;
    win::FileHandle m_file;
    std::wstring m_path;
    bool m_isPipe QRX_GUARDED_BY(m_lock) = false;
    UINT64 m_position QRX_GUARDED_BY(m_lock) = 0;
    std::optional<UINT64> m_handlePosition QRX_GUARDED_BY(m_lock); // of the file itself; none when nobody knows
    std::atomic<UINT64> m_writtenEnd{0};
    std::atomic<HRESULT> m_firstFailure{S_OK};
    FailureHandler m_onFailure;
    FirstUseHandler m_onFirstUse;
    std::atomic<bool> m_isUsed{false};
    HRESULT m_created QRX_GUARDED_BY(m_lock) = S_OK; // why there is no file
};

} // namespace mkvmux
