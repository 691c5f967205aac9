// CAttachment: a MuxAttachment record that owns its strings and bytes.
// Units: bytes. Owner: itself. Threads: never changes. Errors: std::bad_alloc.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <qrx_mkvmuxer.h>

#include "win/bstr.h"

namespace records {

class CAttachment {
  public:
    // What is given stays its holder's. A field is there when it is not null, even an empty one; a data size without
    // data counts as no data.
    explicit CAttachment(const MuxAttachment& attachment);
    CAttachment(const CAttachment&) = delete;
    CAttachment& operator=(const CAttachment&) = delete;
    ~CAttachment() = default;

    // The record; what it points at lives as long as this object.
    [[nodiscard]] const MuxAttachment& Get() const { return m_record; }

  private:
    win::Bstr m_fileName;
    win::Bstr m_description;
    std::optional<std::string> m_mimeType;
    std::vector<BYTE> m_data;
    BYTE m_noBytes = 0; // what data of no bytes points at
    MuxAttachment m_record;
};

} // namespace records
