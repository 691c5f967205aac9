// CAttachmentsElement: the Attachments element of a file. It borrows the bytes of the records, which are not copied.
// Units: bytes. Owner: whoever writes the head of a file. Threads: the writer's. Errors: std::bad_alloc.
#pragma once

#include <vector>

#include <matroska/KaxAttachments.h>
#include <qrx_mkvmuxer.h>

namespace mkv {

class CAttachmentsElement : public libmatroska::KaxAttachments {
  public:
    // The records outlive this object. Null fields, and a UID of 0, are left out; empty ones are written.
    explicit CAttachmentsElement(const std::vector<const MuxAttachment*>& records);
    ~CAttachmentsElement() override;
    CAttachmentsElement(const CAttachmentsElement&) = delete;
    CAttachmentsElement& operator=(const CAttachmentsElement&) = delete;

  private:
    void returnBorrowedData() noexcept;
};

} // namespace mkv
