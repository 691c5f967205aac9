#include "tests/support/text_format.h"

#include <charconv>

namespace test_support {

namespace {

constexpr char kDigits[] = "0123456789abcdef";

void AppendHex(std::string& text, uint8_t byte) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0f];
}

} // namespace

std::string FormatDouble(double value) {
    char text[64];
    const std::to_chars_result end = std::to_chars(text, text + sizeof(text), value);
    return {text, end.ptr};
}

std::string FormatHex(std::span<const uint8_t> bytes) {
    std::string text;
    for (const uint8_t byte : bytes) {
        AppendHex(text, byte);
    }
    return text;
}

std::string FormatHex32(uint32_t value) {
    const uint8_t bytes[] = {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                             static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
    return FormatHex(bytes);
}

std::string Quote(std::string_view text) {
    std::string quoted = "\"";
    for (const char letter : text) {
        const auto byte = static_cast<uint8_t>(letter);
        if (byte < 0x20 || byte > 0x7e) {
            quoted += "\\x";
            AppendHex(quoted, byte);
        } else {
            quoted += letter == '"' || letter == '\\' ? "\\" : "";
            quoted += letter;
        }
    }
    return quoted + "\"";
}

} // namespace test_support
