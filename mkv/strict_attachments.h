// CStrictAttachments: the attachments of a file with all that the format requires of them, where applications may leave
// out anything.
// Owner: whoever writes the head of a file; data and texts that were given stay the caller's, who keeps them as long.
// Threads: the writer's. Errors: std::bad_alloc; what the system's random numbers throw.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include <qrx_mkvmuxer.h>

#include "mkv/identifiers.h"
#include "win/bstr.h"

namespace mkv {

class CStrictAttachments {
  public:
    // One without data is left out: readers complain of it.
    CStrictAttachments(const std::vector<const MuxAttachment*>& records, CIdentifiers& identifiers);
    CStrictAttachments(const CStrictAttachments&) = delete;
    CStrictAttachments& operator=(const CStrictAttachments&) = delete;

    [[nodiscard]] std::vector<const MuxAttachment*> all() const;

  private:
    // The position counts from 1, and names what has no name.
    [[nodiscard]] MuxAttachment complete(const MuxAttachment& record, size_t position, CIdentifiers& identifiers);
    [[nodiscard]] BSTR nameFor(size_t position);

    std::string m_unknownType;
    std::deque<win::Bstr> m_names; // of those that had none
    std::deque<MuxAttachment> m_records;
};

} // namespace mkv
