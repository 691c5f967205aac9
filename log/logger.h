// CLogger: the module's trace log, a plain text file for support. Nothing reads it back.
//
// Threads: any. The lock is held for one insertion, so lines composed of several may interleave piece by piece.
// Errors: silent; a log that cannot be opened or written is a log that stays empty.
#pragma once

#include <atomic>
#include <new>

#include "win/critical_section.h"
#include "win/platform.h"
#include "win/wide_string.h"

class CLogger {
  public:
    CLogger() = default;
    virtual ~CLogger();
    CLogger(const CLogger&) = delete;
    CLogger& operator=(const CLogger&) = delete;

    // Each text may also be a string resource identifier of the module (MAKEINTRESOURCE).
    CLogger& operator<<(const WCHAR* text);
    CLogger& operator<<(INT32 number);
    CLogger& operator<<(INT64 number);

    // Creates the directory with its parents and opens "<baseName>.log" in it. Nonzero on success.
    int OpenNamedLog(const WCHAR* directory, const WCHAR* baseName, bool overwrite);
    // Opens directory\fileName, for appending unless overwrite is set. Nonzero on success, or when switched off.
    int CreateLog(const WCHAR* directory, const WCHAR* fileName, bool overwrite);
    // Always 1; leaves the logger enabled.
    int CloseLog();

    // Switches every operation on or off; closes nothing.
    void SetEnabled(bool enabled) { m_enabled.store(enabled ? 1 : 0, std::memory_order_relaxed); }
    [[nodiscard]] bool IsEnabled() const { return m_enabled.load(std::memory_order_relaxed) != 0; }
    [[nodiscard]] WideString Directory() const;

  private:
    bool WriteText(WideStringView text);
    bool WriteOpenFile(WideStringView text) QRX_REQUIRES(m_lock);
    void CloseOpenFile() QRX_REQUIRES(m_lock);

    HANDLE m_file QRX_GUARDED_BY(m_lock) = INVALID_HANDLE_VALUE;
    mutable win::CriticalSection m_lock;
    WideString m_directory QRX_GUARDED_BY(m_lock); // as last passed to CreateLog
    std::atomic<INT32> m_enabled{0};
};

// Creates every missing directory of the path, shortest first; failures are ignored.
void CreateDirectoryPath(WideStringView path);

// The module's one log.
extern CLogger g_Logger;

// Lines that get lost when memory runs out, so that what they tell of happens all the same.
template <typename Lines>
void LogIfPossible(Lines lines) noexcept {
    try {
        lines();
    } catch (const std::bad_alloc&) {
        return;
    }
}
