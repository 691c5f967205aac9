// Setting the value of a master element's child, which is created when it is not there yet.
#pragma once

#include <string>

#include <ebml/EbmlFloat.h>
#include <ebml/EbmlMaster.h>
#include <ebml/EbmlString.h>
#include <ebml/EbmlUInteger.h>
#include <ebml/EbmlUnicodeString.h>

#include "win/platform.h"
#include "win/utf8_text.h"

namespace mkv {

template <typename Child>
void SetChild(libebml::EbmlMaster& parent, UINT64 value) {
    static_cast<libebml::EbmlUInteger&>(libebml::GetChild<Child>(parent)).SetValue(value);
}

template <typename Child>
void SetChild(libebml::EbmlMaster& parent, const std::string& value) {
    static_cast<libebml::EbmlString&>(libebml::GetChild<Child>(parent)).SetValue(value);
}

template <typename Child>
void SetUtf8Child(libebml::EbmlMaster& parent, const std::string& value) {
    static_cast<libebml::EbmlUnicodeString&>(libebml::GetChild<Child>(parent)).SetValueUTF8(value);
}

// The text ends at its first null character.
template <typename Child>
void SetTextChild(libebml::EbmlMaster& parent, BSTR text) {
    SetUtf8Child<Child>(parent, win::Utf8FromWide(text));
}

} // namespace mkv
