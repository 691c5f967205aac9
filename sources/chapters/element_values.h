// The values of elements of chapter and tag files.
//
// Errors: TextError with the line of the element.
#pragma once

#include <string>
#include <string_view>

#include "sources/chapters/xml_tree.h"
#include "win/platform.h"

namespace chapters {

[[nodiscard]] std::string_view Trimmed(std::string_view text);
// "00:01:02.5", "01:02", "62.5s", "62500ms", in units of 100 ns; what is finer is cut off.
[[nodiscard]] REFERENCE_TIME TimeOf(const XmlElement& element);
[[nodiscard]] UINT64 NumberOf(const XmlElement& element);
[[nodiscard]] bool FlagOf(const XmlElement& element);
// The text as it stands, if the muxer can take so long a one.
[[nodiscard]] std::string TextOf(const XmlElement& element);
// A code or a tag, without a look at what it stands for.
[[nodiscard]] std::string LanguageOf(const XmlElement& element);
[[noreturn]] void RefuseUnknown(const XmlElement& element, const XmlElement& parent);

} // namespace chapters
