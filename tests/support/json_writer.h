// JsonWriter: JSON text, one call a value; commas and quotes are its business, the right nesting is the caller's.
//
// Owner: the text. Threads: one. Errors: none; bytes above 127 pass as they are, so UTF-8 stays UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace test_support {

class JsonWriter {
  public:
    // Without a name inside arrays and at the top.
    void BeginObject(std::string_view name = {}) { Open(name, '{'); }
    void EndObject() { Close('}'); }
    void BeginArray(std::string_view name = {}) { Open(name, '['); }
    void EndArray() { Close(']'); }
    void Text(std::string_view name, std::string_view value);
    void Number(std::string_view name, uint64_t value) { Raw(name, std::to_string(value)); }
    void Signed(std::string_view name, int64_t value) { Raw(name, std::to_string(value)); }
    void Real(std::string_view name, double value);
    void Flag(std::string_view name, bool value) { Raw(name, value ? "true" : "false"); }
    void OptionalNumber(std::string_view name, const std::optional<uint64_t>& value);
    void OptionalText(std::string_view name, const std::optional<std::string>& value);

    [[nodiscard]] const std::string& Result() const { return m_text; }

  private:
    void Open(std::string_view name, char bracket);
    void Close(char bracket);
    void Raw(std::string_view name, std::string_view value);
    void Lead(std::string_view name);
    void AppendQuoted(std::string_view text);

    std::string m_text;
    bool m_needsComma = false;
};

} // namespace test_support
