// Values as elements of a settings document: the one place where they are written to elements and read from them.
//
// An element carries its data type and the value's text. MSXML's typed value is tried first; some platforms refuse it
// for most types, and it would round doubles, so the text is set unless it says the same: files are alike everywhere.
// Units: bytes. Threads: those of the element. Errors: false or nothing; std::bad_alloc.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "settings/msxml.h"
#include "win/variant.h"

namespace xml_data_type {
inline constexpr std::wstring_view kInt32 = L"i4";
inline constexpr std::wstring_view kInt64 = L"i8";
inline constexpr std::wstring_view kDouble = L"r8";
inline constexpr std::wstring_view kString = L"string";
inline constexpr std::wstring_view kBinary = L"bin.base64";
} // namespace xml_data_type

class XmlValue {
  public:
    explicit XmlValue(std::int32_t value);
    explicit XmlValue(std::int64_t value);
    explicit XmlValue(double value);
    explicit XmlValue(std::wstring_view text);
    explicit XmlValue(std::span<const unsigned char> bytes);

    // The element is new: it has neither a content nor a data type.
    [[nodiscard]] bool WriteTo(IXMLDOMElement* element) const;

    // A document can hold it.
    [[nodiscard]] bool IsPossible() const;
    // Whether the platform's parser must be asked if it reads the same value back.
    [[nodiscard]] bool IsDelicate() const { return m_isDelicate; }
    [[nodiscard]] const std::wstring& Text() const { return m_text; }
    // At most so many bytes of a file stand for the text.
    [[nodiscard]] size_t FileBytes() const;

  private:
    std::wstring_view m_dataType;
    win::Variant m_typed;
    std::wstring m_text;
    bool m_keepsSpace = false;
    bool m_isDelicate = false;
};

// Empty for an element that is no value.
[[nodiscard]] std::wstring XmlDataType(IXMLDOMElement* element);
[[nodiscard]] bool IsXmlValue(IXMLDOMElement* element);

// Nothing for an element whose value is not, and does not convert to, one of the type.
[[nodiscard]] std::optional<std::int32_t> ReadInt32(IXMLDOMElement* element);
[[nodiscard]] std::optional<std::int64_t> ReadInt64(IXMLDOMElement* element);
[[nodiscard]] std::optional<double> ReadDouble(IXMLDOMElement* element);
[[nodiscard]] std::optional<std::wstring> ReadText(IXMLDOMElement* element);
[[nodiscard]] std::optional<std::vector<unsigned char>> ReadBytes(IXMLDOMElement* element);
