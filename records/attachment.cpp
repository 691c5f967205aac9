#include "records/attachment.h"

namespace records {

CAttachment::CAttachment(const MuxAttachment& attachment)
    : m_fileName(win::Bstr::CopyOf(attachment.fileName)),
      m_description(win::Bstr::CopyOf(attachment.description)), m_record{} {
    if (attachment.mimeType != nullptr) {
        m_mimeType = attachment.mimeType;
    }
    if (attachment.data != nullptr) {
        m_data.assign(attachment.data, attachment.data + attachment.dataSize);
    }
    m_record.fileName = m_fileName.Get();
    m_record.description = m_description.Get();
    m_record.mimeType = m_mimeType ? m_mimeType->data() : nullptr;
    m_record.dataSize = static_cast<UINT32>(m_data.size());
    m_record.data = m_data.empty() ? &m_noBytes : m_data.data();
    if (attachment.data == nullptr) {
        m_record.data = nullptr;
    }
    m_record.uid = attachment.uid;
}

} // namespace records
