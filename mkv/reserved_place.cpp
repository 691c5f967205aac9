#include "mkv/reserved_place.h"

#include <utility>

#include <ebml/MemIOCallback.h>

namespace mkv {

namespace {

constexpr UINT64 kVoidIdBytes = 1;
constexpr UINT64 kMaxDataOfShortSize = 126; // all ones are no size

// So that it has so many bytes, its head with them.
void SetTotalBytes(libebml::EbmlVoid& element, UINT64 bytes) {
    const int sizeFieldBytes = bytes - kVoidIdBytes - 1 <= kMaxDataOfShortSize ? 1 : 2;
    element.SetSizeLength(sizeFieldBytes);
    element.SetSize(bytes - kVoidIdBytes - static_cast<UINT64>(sizeFieldBytes));
}

UINT64 TotalBytes(libebml::EbmlElement& element) {
    return element.UpdateSize(false, true) + element.HeadSize();
}

// No Void is as short as a byte: the element's size field takes it.
void LengthenSizeField(libebml::EbmlElement& element) {
    const libebml::EbmlId& id = element;
    element.SetSizeLength(static_cast<int>(element.HeadSize() - id.GetLength()) + 1);
}

} // namespace

CReservedPlace::CReservedPlace(libebml::EbmlMaster& parent, UINT64 bytes) : m_bytes(bytes) {
    auto& place = libebml::AddNewChild<libebml::EbmlVoid>(parent);
    SetTotalBytes(place, bytes);
    m_void = &place;
}

bool CReservedPlace::fill(libebml::EbmlElement& element, CFilePatcher& patcher) {
    const UINT64 elementBytes = TotalBytes(element);
    if (isFilled() || elementBytes > m_bytes) {
        return false;
    }
    const UINT64 restBytes = m_bytes - elementBytes;
    if (restBytes == 1) {
        LengthenSizeField(element);
    }
    libebml::MemIOCallback room(m_bytes);
    element.Render(room, false, false, true);
    if (restBytes >= kMinBytes) {
        libebml::EbmlVoid rest;
        SetTotalBytes(rest, restBytes);
        rest.Render(room);
    }
    const UINT64 position = std::exchange(m_void, nullptr)->GetElementPosition();
    patcher.overwriteInHead(position, {room.GetDataBuffer(), static_cast<size_t>(room.GetDataBufferSize())});
    return true;
}

} // namespace mkv
