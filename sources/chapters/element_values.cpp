#include "sources/chapters/element_values.h"

#include <charconv>

#include "sources/base/printable.h"
#include "sources/chapters/clock_time.h"
#include "sources/chapters/text_error.h"

namespace chapters {

namespace {

constexpr size_t kMaxTextBytes = 32767; // code units of UTF-16 take no fewer

[[noreturn]] void Refuse(const XmlElement& element, const char* what) {
    throw TextError(element.line, "<" + source::Printable(element.name) + ">: '" +
                                      source::Printable(Trimmed(element.text)) + "' is no " + what);
}

} // namespace

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kSpaces = " \t\r\n";
    const size_t first = text.find_first_not_of(kSpaces);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(kSpaces) - first + 1);
}

REFERENCE_TIME TimeOf(const XmlElement& element) {
    const auto time = ParseClockTime(Trimmed(element.text));
    if (!time) {
        Refuse(element, "time (HH:MM:SS.nnnnnnnnn)");
    }
    return *time;
}

UINT64 NumberOf(const XmlElement& element) {
    const std::string_view text = Trimmed(element.text);
    UINT64 number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        Refuse(element, "number");
    }
    return number;
}

bool FlagOf(const XmlElement& element) {
    const UINT64 number = NumberOf(element);
    if (number > 1) {
        Refuse(element, "flag (0 or 1)");
    }
    return number == 1;
}

std::string TextOf(const XmlElement& element) {
    if (element.text.size() > kMaxTextBytes) {
        throw TextError(element.line, "<" + source::Printable(element.name) + ">: the text has more than " +
                                          std::to_string(kMaxTextBytes) + " bytes");
    }
    return element.text;
}

std::string LanguageOf(const XmlElement& element) {
    constexpr std::string_view kAllowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-";
    constexpr size_t kLongest = 100;
    const std::string_view text = Trimmed(element.text);
    if (text.size() > kLongest || text.find_first_not_of(kAllowed) != std::string_view::npos) {
        Refuse(element, "language (such as eng, en or pt-BR)");
    }
    return std::string(text);
}

void RefuseUnknown(const XmlElement& element, const XmlElement& parent) {
    throw TextError(element.line, "<" + source::Printable(element.name) + "> is no element of <" +
                                      source::Printable(parent.name) + ">");
}

} // namespace chapters
