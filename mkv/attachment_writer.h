// CAttachmentWriter: the Attachments element of a file. It borrows the bytes of the records, which are not copied.
// Units: bytes. Owner: the file being written, while its head is. Threads: the writer's.
// Errors: std::bad_alloc, what the output throws.
#pragma once

#include <vector>

#include <matroska/KaxAttachments.h>
#include <qrx_mkvmuxer.h>

class CAttachmentWriter {
  public:
    // The records outlive this object. Null fields, and a UID of 0, are left out; empty ones are written.
    explicit CAttachmentWriter(const std::vector<const MuxAttachment*>& records);
    ~CAttachmentWriter();
    CAttachmentWriter(const CAttachmentWriter&) = delete;
    CAttachmentWriter& operator=(const CAttachmentWriter&) = delete;

    // The bytes written.
    [[nodiscard]] UINT64 render(libebml::IOCallback& io);
    // Knows its position once it is rendered.
    [[nodiscard]] const libmatroska::KaxAttachments& element() const { return m_attachments; }

  private:
    void returnBorrowedData() noexcept;

    libmatroska::KaxAttachments m_attachments;
};
