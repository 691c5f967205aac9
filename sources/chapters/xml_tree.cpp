#include "sources/chapters/xml_tree.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "sources/base/printable.h"
#include "sources/chapters/text_error.h"

namespace chapters {

namespace {

constexpr std::string_view kSpaces = " \t\r\n";

// Gives the text away from its front, and counts lines.
class Cursor {
  public:
    explicit Cursor(std::string_view text) : m_rest(text) {}

    [[nodiscard]] std::string_view Rest() const { return m_rest; }
    [[nodiscard]] size_t Line() const { return m_line; }

    std::string_view Take(size_t length) {
        const std::string_view taken = m_rest.substr(0, length);
        m_line += static_cast<size_t>(std::count(taken.begin(), taken.end(), '\n'));
        m_rest.remove_prefix(taken.size());
        return taken;
    }
    bool TakeIf(std::string_view prefix) {
        const bool isThere = m_rest.starts_with(prefix);
        Take(isThere ? prefix.size() : 0);
        return isThere;
    }
    // What stands before the end, which is taken too.
    std::string_view TakeUntil(std::string_view end, const char* what) {
        const size_t length = m_rest.find(end);
        if (length == std::string_view::npos) {
            throw TextError(m_line, std::string(what) + " does not end");
        }
        const std::string_view taken = Take(length);
        Take(end.size());
        return taken;
    }
    void SkipSpaces() { Take(std::min(m_rest.find_first_not_of(kSpaces), m_rest.size())); }

  private:
    std::string_view m_rest;
    size_t m_line = 1;
};

std::string Quoted(std::string_view text) {
    return "'" + source::Printable(text) + "'";
}

void AddUtf8(std::string& text, unsigned long character) {
    constexpr unsigned kBits = 6;
    constexpr unsigned kMask = 0x3F;
    const auto add = [&text](unsigned long byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (character < 0x80) {
        add(character);
        return;
    }
    const unsigned more = character < 0x800 ? 1 : (character < 0x10000 ? 2 : 3);
    constexpr unsigned kFirst[] = {0, 0xC0, 0xE0, 0xF0};
    add(kFirst[more] | character >> (kBits * more));
    for (unsigned left = more; left-- > 0;) {
        add(0x80 | (character >> (kBits * left) & kMask));
    }
}

// What XML calls a character; a null character among others is none.
bool IsCharacter(unsigned long c) {
    const bool isControl = c < 0x20 && c != '\t' && c != '\n' && c != '\r';
    return !isControl && !(c >= 0xD800 && c < 0xE000) && c <= 0x10FFFF;
}

std::optional<unsigned long> CharacterOf(std::string_view reference) {
    const bool isHex = reference.starts_with("#x");
    reference.remove_prefix(isHex ? 2 : 1);
    unsigned long number = 0;
    const auto [end, error] =
        std::from_chars(reference.data(), reference.data() + reference.size(), number, isHex ? 16 : 10);
    const bool isWhole = error == std::errc() && end == reference.data() + reference.size();
    return isWhole && IsCharacter(number) ? std::optional(number) : std::nullopt;
}

void AddReference(std::string& text, Cursor& cursor) {
    constexpr size_t kLongest = 12;
    const size_t line = cursor.Line();
    const std::string_view ahead = cursor.Rest().substr(0, kLongest);
    const size_t length = ahead.find(';');
    const std::string_view name = ahead.substr(0, length);
    if (length == std::string_view::npos) {
        throw TextError(line, "'&' begins no reference; '&amp;' stands for the character itself");
    }
    cursor.Take(length + 1);
    constexpr std::pair<std::string_view, char> kNames[] = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto& [known, character] : kNames) {
        if (name == known) {
            text += character;
            return;
        }
    }
    const auto character = name.starts_with("#") ? CharacterOf(name) : std::nullopt;
    if (!character) {
        throw TextError(line, "the entity " + Quoted(name) + " is not known");
    }
    AddUtf8(text, *character);
}

std::string_view TakeName(Cursor& cursor) {
    constexpr std::string_view kEnds = " \t\r\n/><&=\"'!?";
    const std::string_view name = cursor.Rest().substr(0, cursor.Rest().find_first_of(kEnds));
    if (name.empty()) {
        throw TextError(cursor.Line(), "'<' is followed by no name; '&lt;' stands for the character itself");
    }
    return cursor.Take(name.size());
}

// Whether the tag ends its element at once.
bool SkipAttributes(Cursor& cursor) {
    for (;;) {
        const size_t next = cursor.Rest().find_first_of("\"'<>");
        if (next == std::string_view::npos || cursor.Rest()[next] == '<') {
            throw TextError(cursor.Line(), "a tag does not end");
        }
        const std::string_view before = cursor.Take(next);
        const char found = cursor.Rest()[0];
        cursor.Take(1);
        if (found == '>') {
            return before.ends_with('/');
        }
        (void)cursor.TakeUntil(std::string_view(&found, 1), "an attribute");
    }
}

void SkipDocumentType(Cursor& cursor) {
    for (;;) {
        const size_t next = cursor.Rest().find_first_of("\"'[>");
        if (next == std::string_view::npos || cursor.Rest()[next] == '[') {
            throw TextError(cursor.Line(), "a document type with declarations of its own is not read");
        }
        cursor.Take(next);
        const char found = cursor.Rest()[0];
        cursor.Take(1);
        if (found == '>') {
            return;
        }
        (void)cursor.TakeUntil(std::string_view(&found, 1), "the document type");
    }
}

// Comments and instructions; false when none comes.
bool SkipOther(Cursor& cursor) {
    if (cursor.TakeIf("<!--")) {
        (void)cursor.TakeUntil("-->", "a comment");
        return true;
    }
    if (cursor.TakeIf("<?")) {
        (void)cursor.TakeUntil("?>", "an instruction");
        return true;
    }
    return false;
}

class TreeReader {
  public:
    explicit TreeReader(std::string_view text) : m_cursor(text) {}

    XmlElement Read() {
        SkipAround(true);
        if (!m_cursor.TakeIf("<")) {
            throw TextError(m_cursor.Line(), "it is no XML document");
        }
        XmlElement root;
        ReadElement(root, 1);
        SkipAround(false);
        if (!m_cursor.Rest().empty()) {
            throw TextError(m_cursor.Line(), "something stands behind the document's end");
        }
        return root;
    }

  private:
    void SkipAround(bool mayHaveType) {
        do {
            m_cursor.SkipSpaces();
            if (mayHaveType && m_cursor.TakeIf("<!DOCTYPE")) {
                SkipDocumentType(m_cursor);
                m_cursor.SkipSpaces();
            }
        } while (SkipOther(m_cursor));
    }

    // Behind its '<'. No deeper than the bound.
    void ReadElement(XmlElement& element, size_t depth) { // NOLINT(misc-no-recursion)
        element.line = m_cursor.Line();
        if (++m_count > kMaxXmlElements || depth > kMaxXmlDepth) {
            throw TextError(element.line, "it has too many elements, or too deep ones");
        }
        element.name = TakeName(m_cursor);
        if (SkipAttributes(m_cursor)) {
            return;
        }
        while (!m_cursor.TakeIf("</")) {
            if (!ReadText(element) && !SkipOther(m_cursor)) {
                m_cursor.Take(1);
                ReadElement(element.children.emplace_back(), depth + 1);
            }
        }
        const size_t line = m_cursor.Line();
        const std::string_view name = TakeName(m_cursor);
        m_cursor.SkipSpaces();
        if (name != element.name || !m_cursor.TakeIf(">")) {
            throw TextError(line, "<" + source::Printable(element.name) + "> of line " + std::to_string(element.line) +
                                      " is not ended by </" + source::Printable(name) + ">");
        }
    }

    // False when markup comes.
    bool ReadText(XmlElement& element) {
        if (m_cursor.TakeIf("<![CDATA[")) {
            element.text += m_cursor.TakeUntil("]]>", "a section of character data");
            return true;
        }
        const size_t next = m_cursor.Rest().find_first_of("<&");
        if (next == std::string_view::npos) {
            throw TextError(element.line, "<" + source::Printable(element.name) + "> does not end");
        }
        element.text += m_cursor.Take(next);
        if (m_cursor.TakeIf("&")) {
            AddReference(element.text, m_cursor);
            return true;
        }
        return next > 0;
    }

    Cursor m_cursor;
    size_t m_count = 0;
};

} // namespace

XmlElement ParseXml(std::string_view text) {
    return TreeReader(text).Read();
}

} // namespace chapters
