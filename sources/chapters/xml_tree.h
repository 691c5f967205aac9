// ParseXml: a whole XML document as a tree of its elements, for files that come from strangers: nothing is looked up
// outside of the document, one with declarations of its own is refused, and every error tells its line.
//
// Units: UTF-8; lines from 1. Threads: any. Errors: TextError, std::bad_alloc. Memory: in proportion to the text; the
// tree is bounded by the number of elements and their depth.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace chapters {

// Attributes, comments and instructions are left out.
struct XmlElement {
    std::string name;
    std::string text; // of the element itself, without that of its children
    size_t line = 0;
    std::vector<XmlElement> children;
};

inline constexpr size_t kMaxXmlElements = 200000;
inline constexpr size_t kMaxXmlDepth = 64;

// The root element.
[[nodiscard]] XmlElement ParseXml(std::string_view text);

} // namespace chapters
