#include "mkv/strict_attachments.h"

#include <algorithm>
#include <string_view>

namespace mkv {

namespace {

bool IsEmpty(BSTR text) {
    return text == nullptr || *text == 0;
}

// A type and a subtype, in the characters that the element may hold.
bool IsMediaType(const char* text) {
    const std::string_view type = text == nullptr ? std::string_view() : text;
    const size_t slash = type.find('/');
    return slash != std::string_view::npos && slash > 0 && slash + 1 < type.size() &&
           std::all_of(type.begin(), type.end(), [](char letter) { return letter >= ' ' && letter <= '~'; });
}

bool HasData(const MuxAttachment& record) {
    return record.data != nullptr && record.dataSize > 0;
}

} // namespace

CStrictAttachments::CStrictAttachments(const std::vector<const MuxAttachment*>& records, CIdentifiers& identifiers)
    : m_unknownType("application/octet-stream") {
    for (size_t i = 0; i < records.size(); ++i) {
        if (HasData(*records[i])) {
            m_records.push_back(complete(*records[i], i + 1, identifiers));
        }
    }
}

MuxAttachment CStrictAttachments::complete(const MuxAttachment& record, size_t position, CIdentifiers& identifiers) {
    MuxAttachment whole = record;
    if (IsEmpty(whole.fileName)) {
        whole.fileName = nameFor(position);
    }
    if (IsEmpty(whole.description)) {
        whole.description = nullptr;
    }
    if (!IsMediaType(whole.mimeType)) {
        whole.mimeType = m_unknownType.data();
    }
    whole.uid = identifiers.nextOr(whole.uid);
    return whole;
}

BSTR CStrictAttachments::nameFor(size_t position) {
    const std::string name = "attachment-" + std::to_string(position);
    m_names.emplace_back(WideString(name.begin(), name.end()));
    return m_names.back().Get();
}

std::vector<const MuxAttachment*> CStrictAttachments::all() const {
    std::vector<const MuxAttachment*> records;
    for (const MuxAttachment& record : m_records) {
        records.push_back(&record);
    }
    return records;
}

} // namespace mkv
