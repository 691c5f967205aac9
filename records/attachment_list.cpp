#include "records/attachment_list.h"

#include <mutex>

namespace {

// Binary elements of this length and above are refused by the library's readers.
constexpr UINT32 kTooManyAttachmentBytes = 0x7fffffff;

} // namespace

bool CAttachmentList::add(const MuxAttachment& attachment) {
    if (attachment.data != nullptr && attachment.dataSize >= kTooManyAttachmentBytes) {
        return false;
    }
    auto copy = std::make_unique<const CMuxAttachmentCopy>(attachment);
    const std::lock_guard guard(m_lock);
    m_copies.push_back(std::move(copy));
    return true;
}

size_t CAttachmentList::count() const {
    const std::lock_guard guard(m_lock);
    return m_copies.size();
}

const MuxAttachment* CAttachmentList::at(size_t i) const {
    const std::lock_guard guard(m_lock);
    return i < m_copies.size() ? &m_copies[i]->get() : nullptr;
}

std::vector<const MuxAttachment*> CAttachmentList::all() const {
    const std::lock_guard guard(m_lock);
    std::vector<const MuxAttachment*> records;
    records.reserve(m_copies.size());
    for (const auto& copy : m_copies) {
        records.push_back(&copy->get());
    }
    return records;
}
