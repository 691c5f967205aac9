#include "tests/support/json_writer.h"

#include <cmath>

#include "tests/support/text_format.h"

namespace test_support {

void JsonWriter::Lead(std::string_view name) {
    m_text += m_needsComma ? ",\n" : m_text.empty() ? "" : "\n";
    m_needsComma = true;
    if (!name.empty()) {
        AppendQuoted(name);
        m_text += ": ";
    }
}

void JsonWriter::Open(std::string_view name, char bracket) {
    Lead(name);
    m_text += bracket;
    m_needsComma = false;
}

void JsonWriter::Close(char bracket) {
    m_text += bracket;
    m_needsComma = true;
}

void JsonWriter::Raw(std::string_view name, std::string_view value) {
    Lead(name);
    m_text += value;
}

void JsonWriter::AppendQuoted(std::string_view text) {
    m_text += '"';
    for (const char letter : text) {
        const auto byte = static_cast<uint8_t>(letter);
        if (byte < 0x20) {
            m_text += "\\u00" + FormatHex({&byte, 1});
        } else {
            m_text += letter == '"' || letter == '\\' ? "\\" : "";
            m_text += letter;
        }
    }
    m_text += '"';
}

void JsonWriter::Text(std::string_view name, std::string_view value) {
    Lead(name);
    AppendQuoted(value);
}

void JsonWriter::Real(std::string_view name, double value) {
    Raw(name, std::isfinite(value) ? FormatDouble(value) : "null"); // JSON has no infinity
}

void JsonWriter::OptionalNumber(std::string_view name, const std::optional<uint64_t>& value) {
    Raw(name, value ? std::to_string(*value) : "null");
}

void JsonWriter::OptionalText(std::string_view name, const std::optional<std::string>& value) {
    if (value) {
        Text(name, *value);
    } else {
        Raw(name, "null");
    }
}

} // namespace test_support
