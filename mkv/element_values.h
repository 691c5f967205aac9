// Setting the value of a master element's child, which is created when it is not there yet.
#pragma once

#include <string>

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

} // namespace mkv
