// CConnectedInputs: how many inputs there are and what each connected one carries, for those who must not take the
// filter lock: the stream behind the output asks on the worker, which Stop joins under that lock.
//
// Owner: the filter. Threads: any; one lock, under which nothing else is locked or called. Errors: std::bad_alloc.
#pragma once

#include <optional>
#include <vector>

#include "win/critical_section.h"
#include "win/platform.h"

class CConnectedInputs {
  public:
    // A further input, not connected.
    void Add();
    void Connect(INT32 index, const GUID& majorType);
    void Disconnect(INT32 index);

    [[nodiscard]] size_t Count() const;
    // None for an input that is not connected or not there.
    [[nodiscard]] std::optional<GUID> MajorTypeOf(INT32 index) const;

  private:
    void Set(INT32 index, const std::optional<GUID>& majorType);
    [[nodiscard]] bool IsInside(INT32 index) const QRX_REQUIRES(m_lock) {
        return index >= 0 && static_cast<size_t>(index) < m_majorTypes.size();
    }

    mutable win::CriticalSection m_lock;
    std::vector<std::optional<GUID>> m_majorTypes QRX_GUARDED_BY(m_lock);
};
