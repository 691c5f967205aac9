// Setting the value of a master element's child, which is created when it is not there yet.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <new>
#include <span>
#include <string>

#include <ebml/EbmlBinary.h>
#include <ebml/EbmlMaster.h>

#include "win/platform.h"
#include "win/utf8_text.h"

namespace mkv {

// A number or a string of bytes, as the child takes it.
template <typename Child, typename Value>
void SetChild(libebml::EbmlMaster& parent, const Value& value) {
    libebml::GetChild<Child>(parent).SetValue(value);
}

// Written even where it is the format's default, which the library leaves out otherwise.
template <typename Child, typename Value>
void SetToldChild(libebml::EbmlMaster& parent, const Value& value) {
    SetChild<Child>(parent, value);
    libebml::GetChild<Child>(parent).ForceNoDefault();
}

template <typename Child>
void SetUtf8Child(libebml::EbmlMaster& parent, const std::string& value) {
    libebml::GetChild<Child>(parent).SetValueUTF8(value);
}

// The text ends at its first null character.
template <typename Child>
void SetTextChild(libebml::EbmlMaster& parent, BSTR text) {
    SetUtf8Child<Child>(parent, win::Utf8FromWide(text));
}

// A copy of the bytes. The library's own does not look whether there was memory for it. Throws std::bad_alloc.
inline void SetBytes(libebml::EbmlBinary& element, std::span<const BYTE> bytes) {
    // Freed by the element, with free; without any bytes it needs a pointer, too.
    auto* const copy = static_cast<BYTE*>(std::malloc(bytes.size() + 1));
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    std::copy(bytes.begin(), bytes.end(), copy);
    element.SetBuffer(copy, static_cast<UINT32>(bytes.size()));
}

template <typename Child>
void SetBytesChild(libebml::EbmlMaster& parent, std::span<const BYTE> bytes) {
    SetBytes(libebml::GetChild<Child>(parent), bytes);
}

} // namespace mkv
