// What of the settings' loader knows no Windows, on the bytes of a settings file: the look at a document before a
// parser sees it, the layout, names and values. Expat judges: a document type that a parser meets is never harmless,
// and the layout changes nothing but white space between tags.
//
// MSXML itself, and the walk over its nodes, exist under Windows only; their damaged files are in tests/settings.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <expat.h>

#include "fuzz/require.h"
#include "settings/lexical.h"
#include "settings/xml_layout.h"
#include "settings/xml_names.h"
#include "settings/xml_survey.h"

namespace {

using fuzz::Require;

constexpr size_t kValueAttributes = 3;

struct Parsed {
    bool isWellFormed = false;
    bool hasDocumentType = false;
    size_t mostAttributes = 0; // of one element and all that it is within, but for three each that a value may have
    std::string events;        // tags, attributes and characters, without white space between them
    std::vector<size_t> open;  // the same, of each element that is open
};

size_t Total(const Parsed& parsed) {
    size_t total = 0;
    for (const size_t count : parsed.open) {
        total += count;
    }
    return total;
}

void OnStart(void* user, const char* name, const char** attributes) {
    auto& parsed = *static_cast<Parsed*>(user);
    parsed.events.append("<").append(name);
    size_t count = 0;
    for (; *attributes != nullptr; attributes += 2, ++count) {
        parsed.events.append(" ").append(attributes[0]).append("=").append(attributes[1]);
    }
    parsed.open.push_back(count - std::min(count, kValueAttributes));
    parsed.mostAttributes = std::max(parsed.mostAttributes, Total(parsed));
}

void OnEnd(void* user, const char* /*name*/) {
    auto& parsed = *static_cast<Parsed*>(user);
    parsed.events.append(">");
    parsed.open.pop_back();
}

void OnText(void* user, const char* text, int length) {
    auto& events = static_cast<Parsed*>(user)->events;
    for (const char c : std::string_view(text, static_cast<size_t>(length))) {
        if (std::strchr(" \t\r\n", c) == nullptr || c == '\0') {
            events += c;
        }
    }
}

void OnDocumentType(void* user, const char*, const char*, const char*, int) {
    static_cast<Parsed*>(user)->hasDocumentType = true;
}

Parsed Parse(std::string_view document) {
    Parsed parsed;
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              XML_ParserFree);
    XML_SetUserData(parser.get(), &parsed);
    XML_SetElementHandler(parser.get(), OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser.get(), OnText);
    XML_SetStartDoctypeDeclHandler(parser.get(), OnDocumentType);
    parsed.isWellFormed =
        XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), 1) == XML_STATUS_OK;
    return parsed;
}

// ---- Before a parser sees it -------------------------------------------------------------------------------------

void CheckSurvey(const std::string& document, const Parsed& parsed) {
    if (!IsHarmless(document)) {
        return;
    }
    Require(!parsed.hasDocumentType);
    Require(!parsed.isWellFormed || parsed.mostAttributes <= kMaxAttributes);
}

std::string Without(std::string text, std::string_view part) {
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part)) {
        text.erase(at, part.size());
    }
    return text;
}

std::string Widened(const std::string& narrow, bool bigEndian) {
    std::string wide;
    for (const char c : narrow) {
        wide += bigEndian ? '\0' : c;
        wide += bigEndian ? c : '\0';
    }
    return wide;
}

// Whatever stands in a comment or an instruction, it hides no document type behind it, in any encoding.
void CheckHiding(const std::string& bytes) {
    const std::string type = "<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>";
    for (const std::string& document :
         {"<!--" + Without(bytes, "-") + "-->" + type, "<?a " + Without(bytes, "?") + "?>" + type}) {
        Require(!IsHarmless(document));
        Require(!IsHarmless(Widened(document, false)));
        Require(!IsHarmless(Widened(document, true)));
    }
}

// ---- The layout --------------------------------------------------------------------------------------------------

// The characters of UTF-8 one by one as they are: layout knows ASCII alone.
std::wstring OneByOne(std::string_view bytes) {
    std::wstring text;
    for (const char c : bytes) {
        text += static_cast<wchar_t>(static_cast<unsigned char>(c));
    }
    return text;
}

std::string Back(std::wstring_view text) {
    std::string bytes;
    for (const wchar_t c : text) {
        bytes += static_cast<char>(c);
    }
    return bytes;
}

void CheckLayout(const std::string& document, const Parsed& parsed) {
    const std::wstring laidOut = OneTagPerLine(OneByOne(document));
    const bool isUtf8 = document.find("encoding") == std::string::npos && document.starts_with('<') &&
                        document.find('\0') == std::string::npos;
    if (!parsed.isWellFormed || !isUtf8) {
        return;
    }
    const Parsed after = Parse(Back(laidOut));
    Require(after.isWellFormed && after.events == parsed.events);
    Require(OneTagPerLine(laidOut) == laidOut);
}

// ---- Values and names --------------------------------------------------------------------------------------------

void CheckValues(const std::wstring& text, std::string_view bytes) {
    if (const auto value = ParseDouble(text)) {
        const auto again = ParseDouble(DoubleText(*value));
        Require(again && (*again == *value || (std::isnan(*again) && std::isnan(*value))));
    }
    if (const auto value = ParseInt32(text)) {
        Require(ParseInt64(text) == std::int64_t{*value});
    }
    (void)IsXmlText(text);
    (void)Base64Size(text);
    const std::span<const unsigned char> data(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    const std::wstring base64 = Base64Text(data);
    Require(Base64Size(base64) == bytes.size() && IsXmlText(base64));
}

void CheckNames(const std::wstring& text) {
    for (const auto& path : {EffectiveSectionPath(L"", text), ValuePath(L"/a", text)}) {
        if (!path) {
            continue;
        }
        Require(path->find_first_of(L"[]()'\"*@|=<>&:\\ ") == std::wstring::npos); // of a query, or of markup
        std::wstring joined;
        for (const std::wstring& name : ElementNames(*path)) {
            Require(!name.empty());
            joined += L'/' + name;
        }
        Require(joined == *path);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const Parsed parsed = Parse(bytes);
    CheckSurvey(bytes, parsed);
    CheckHiding(bytes);
    CheckLayout(bytes, parsed);
    const std::wstring text = OneByOne(bytes);
    CheckValues(text, bytes);
    CheckNames(text);
    return 0;
}
