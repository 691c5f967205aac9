#include "sources/chapters/xml_tree.h"

#include <algorithm>
#include <cctype>
#include <new>

#include <pugixml.hpp>

#include "sources/chapters/text_error.h"

namespace chapters {

namespace {

// Counts lines on the way through the text, which nobody goes backwards.
class LineCounter {
  public:
    explicit LineCounter(std::string_view text) : m_text(text) {}

    size_t LineAt(ptrdiff_t offset) {
        const size_t wanted =
            std::clamp<size_t>(static_cast<size_t>(std::max<ptrdiff_t>(offset, 0)), m_offset, m_text.size());
        m_line += static_cast<size_t>(std::count(m_text.begin() + static_cast<ptrdiff_t>(m_offset),
                                                 m_text.begin() + static_cast<ptrdiff_t>(wanted), '\n'));
        m_offset = wanted;
        return m_line;
    }

  private:
    std::string_view m_text;
    size_t m_offset = 0;
    size_t m_line = 1;
};

class TreeReader {
  public:
    explicit TreeReader(std::string_view text) : m_lines(text) {}

    // No deeper than the bound.
    void Read(const pugi::xml_node& node, XmlElement& element, size_t depth) { // NOLINT(misc-no-recursion)
        element.line = m_lines.LineAt(node.offset_debug());
        if (++m_count > kMaxXmlElements || depth > kMaxXmlDepth) {
            throw TextError(element.line, "it has too many elements, or too deep ones");
        }
        element.name = node.name();
        for (const pugi::xml_node& child : node.children()) {
            if (child.type() == pugi::node_element) {
                Read(child, element.children.emplace_back(), depth + 1);
            } else if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
                element.text += child.value();
            }
        }
    }

  private:
    LineCounter m_lines;
    size_t m_count = 0;
};

void Check(const pugi::xml_parse_result& result, std::string_view text) {
    if (result.status == pugi::status_out_of_memory) {
        throw std::bad_alloc();
    }
    if (!result) {
        std::string reason = result.description();
        reason[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(reason[0])));
        throw TextError(LineCounter(text).LineAt(result.offset), "it is no XML document: " + reason);
    }
}

// What it declares would be missing in the texts.
void RefuseDeclarations(const pugi::xml_document& document, std::string_view text) {
    for (const pugi::xml_node& node : document.children()) {
        if (node.type() == pugi::node_doctype && std::string_view(node.value()).find('[') != std::string_view::npos) {
            throw TextError(LineCounter(text).LineAt(node.offset_debug()),
                            "a document type with declarations of its own is not read");
        }
    }
}

} // namespace

XmlElement ParseXml(std::string_view text) {
    pugi::xml_document document;
    constexpr unsigned kParts = pugi::parse_default | pugi::parse_doctype;
    Check(document.load_buffer(text.data(), text.size(), kParts, pugi::encoding_utf8), text);
    RefuseDeclarations(document, text);
    const pugi::xml_node root = document.document_element();
    if (const pugi::xml_node second = root.next_sibling()) {
        throw TextError(LineCounter(text).LineAt(second.offset_debug()), "something stands behind the document's end");
    }
    XmlElement element;
    TreeReader(text).Read(root, element, 1);
    return element;
}

} // namespace chapters
