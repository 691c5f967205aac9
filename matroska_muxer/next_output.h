// CNextOutput: the stream that the application wants the next file in, and when.
//
// Owner: the filter; the stream is a counted reference. Threads: any, one lock that is held while no call of the
// stream's runs but AddRef; whether something is wanted is asked without it. Errors: HRESULTs.
#pragma once

#include <atomic>
#include <optional>

#include <qrx_mkvmuxer.h>

#include "win/com_ptr.h"
#include "win/critical_section.h"

class CNextOutput {
  public:
    // Its size is that of the record.
    [[nodiscard]] MuxNextOutputRule Rule() const;
    // E_INVALIDARG for values that cannot be.
    [[nodiscard]] HRESULT SetRule(const MuxNextOutputRule& rule);

    // In place of what still waits; null for nothing. VFW_E_WRONG_STATE while no file is open, E_NOINTERFACE.
    [[nodiscard]] HRESULT Want(IUnknown* output);
    // What still waits.
    [[nodiscard]] win::ComPtr<IStream> Wanted() const;

    // ---- The filter's ----

    void OpenFile();
    // What waited is taken away.
    [[nodiscard]] win::ComPtr<IStream> CloseFile();

    [[nodiscard]] bool IsWanted() const { return m_isWanted.load(std::memory_order_acquire); }
    // Of what waits.
    [[nodiscard]] std::optional<MuxNextOutputRule> WantedRule() const;
    struct Request {
        win::ComPtr<IStream> stream; // null when it was withdrawn
        MuxNextOutputRule rule{};
    };
    [[nodiscard]] Request Take();

  private:
    [[nodiscard]] HRESULT Exchange(win::ComPtr<IStream>& stream);

    mutable win::CriticalSection m_lock;
    bool m_isFileOpen QRX_GUARDED_BY(m_lock) = false;
    MuxNextOutputRule m_rule QRX_GUARDED_BY(m_lock){sizeof(MuxNextOutputRule), MuxOutputTimes_FromZero, 0, 0, 0};
    Request m_request QRX_GUARDED_BY(m_lock);
    std::atomic<bool> m_isWanted{false}; // there is one; changes under the lock
};
