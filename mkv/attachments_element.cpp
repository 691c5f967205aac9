#include "mkv/attachments_element.h"

#include <algorithm>
#include <memory>
#include <string>

#include <matroska/KaxAttached.h>

#include "mkv/element_values.h"

namespace mkv {

namespace {

using libmatroska::KaxAttached;

void FillAttached(KaxAttached& attached, const MuxAttachment& record) {
    if (record.description != nullptr) {
        SetTextChild<libmatroska::KaxFileDescription>(attached, record.description);
    }
    if (record.fileName != nullptr) {
        SetTextChild<libmatroska::KaxFileName>(attached, record.fileName);
    }
    if (record.mimeType != nullptr) {
        SetChild<libmatroska::KaxMimeType>(attached, std::string(record.mimeType));
    }
    if (record.data != nullptr) {
        libebml::GetChild<libmatroska::KaxFileData>(attached).SetBuffer(record.data, record.dataSize);
    }
    if (record.uid != 0) {
        SetChild<libmatroska::KaxFileUID>(attached, record.uid);
    }
}

// The library makes every mandatory child beforehand; one that got no value would be written with an undefined one.
void RemoveChildrenWithoutValue(KaxAttached& attached) {
    auto& children = attached.GetElementList();
    const auto isValued = [](const libebml::EbmlElement* child) { return child->ValueIsSet(); };
    const auto firstWithout = std::stable_partition(children.begin(), children.end(), isValued);
    std::for_each(firstWithout, children.end(), std::default_delete<libebml::EbmlElement>());
    children.erase(firstWithout, children.end());
}

} // namespace

CAttachmentsElement::CAttachmentsElement(const std::vector<const MuxAttachment*>& records) {
    try {
        for (const MuxAttachment* record : records) {
            auto& attached = libebml::AddNewChild<KaxAttached>(*this);
            FillAttached(attached, *record);
            RemoveChildrenWithoutValue(attached);
        }
    } catch (...) {
        returnBorrowedData();
        throw;
    }
}

CAttachmentsElement::~CAttachmentsElement() {
    returnBorrowedData();
}

// The elements would free the bytes that they were lent.
void CAttachmentsElement::returnBorrowedData() noexcept {
    for (libebml::EbmlElement* attached : GetElementList()) {
        auto* const data = libebml::FindChild<libmatroska::KaxFileData>(static_cast<KaxAttached&>(*attached));
        if (data != nullptr) {
            data->SetBuffer(nullptr, 0);
        }
    }
}

} // namespace mkv
