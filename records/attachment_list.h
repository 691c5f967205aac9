// CAttachmentList: the attachments of the files to be written. It only grows, and records never move, so a record
// once handed out stays valid as long as the list.
// Units: bytes. Owner: the writer. Threads: any; parameters are set while a file is being opened.
// Errors: std::bad_alloc.
#pragma once

#include <memory>
#include <vector>

#include "records/attachment.h"
#include "win/critical_section.h"

namespace records {

class CAttachmentList {
  public:
    // Appends a deep copy. False, and nothing is appended, for data too long to be read back.
    bool Add(const MuxAttachment& attachment);
    [[nodiscard]] size_t Count() const;
    // Null beyond the end.
    [[nodiscard]] const MuxAttachment* At(size_t i) const;
    [[nodiscard]] std::vector<const MuxAttachment*> All() const;

  private:
    mutable win::CriticalSection m_lock;
    std::vector<std::unique_ptr<const CAttachment>> m_copies QRX_GUARDED_BY(m_lock);
};

} // namespace records
