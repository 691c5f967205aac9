#include "records/attachment_list.h"

namespace records {

namespace {

// Binary elements of this length and above are refused by the library's readers.
constexpr UINT32 kTooManyAttachmentBytes = 0x7fffffff;

} // namespace

bool CAttachmentList::Add(const MuxAttachment& attachment) {
    if (attachment.data != nullptr && attachment.dataSize >= kTooManyAttachmentBytes) {
        return false;
    }
    auto copy = std::make_unique<const CAttachment>(attachment);
    const win::LockGuard lock(m_lock);
    m_copies.push_back(std::move(copy));
    return true;
}

size_t CAttachmentList::Count() const {
    const win::LockGuard lock(m_lock);
    return m_copies.size();
}

const MuxAttachment* CAttachmentList::At(size_t i) const {
    const win::LockGuard lock(m_lock);
    return i < m_copies.size() ? &m_copies[i]->Get() : nullptr;
}

std::vector<const MuxAttachment*> CAttachmentList::All() const {
    const win::LockGuard lock(m_lock);
    std::vector<const MuxAttachment*> records;
    records.reserve(m_copies.size());
    for (const auto& copy : m_copies) {
        records.push_back(&copy->Get());
    }
    return records;
}

} // namespace records
