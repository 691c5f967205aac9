#include "settings/xml_value.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "settings/lexical.h"
#include "settings/xml_document.h"
#include "win/com_ptr.h"

namespace {

constexpr std::wstring_view kDataTypeName = L"dt";
constexpr std::wstring_view kDataTypeNamespace = L"urn:schemas-microsoft-com:datatypes";
constexpr std::wstring_view kSpaceAttribute = L"xml:space";
constexpr std::wstring_view kPreserve = L"preserve";
constexpr LCID kUsEnglish = MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), SORT_DEFAULT);

VARIANT TypedArray(std::span<const unsigned char> bytes) {
    VARIANT value{};
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    void* data = nullptr;
    if (array == nullptr || FAILED(SafeArrayAccessData(array, &data))) {
        SafeArrayDestroy(array);
        throw std::bad_alloc();
    }
    if (!bytes.empty()) {
        std::memcpy(data, bytes.data(), bytes.size());
    }
    SafeArrayUnaccessData(array);
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = array;
    return value;
}

// White space that a parser would trim or join unless the element says that it counts.
bool HasFragileSpace(std::wstring_view text) {
    if (text.empty()) {
        return false;
    }
    return IsXmlSpace(text.front()) || IsXmlSpace(text.back()) || text.find(L"  ") != std::wstring_view::npos ||
           text.find_first_of(L"\t\r\n") != std::wstring_view::npos;
}

std::wstring TextOf(IXMLDOMNode* node) {
    win::Bstr text;
    return SUCCEEDED(node->get_text(text.Put())) ? std::wstring(text.View()) : std::wstring();
}

void SetInt32(win::Variant& variant, std::int32_t value) {
    VARIANT* const raw = variant.Put();
    raw->vt = VT_I4;
    raw->lVal = value;
}

void SetInt64(win::Variant& variant, std::int64_t value) {
    VARIANT* const raw = variant.Put();
    raw->vt = VT_I8;
    raw->llVal = value;
}

void SetDouble(win::Variant& variant, double value) {
    VARIANT* const raw = variant.Put();
    raw->vt = VT_R8;
    raw->dblVal = value;
}

// Numbers are read from their text, which is exact; any other type is the platform's business.
// Stays empty for an element that is no value, and for a text that is not of its type.
void ReadTyped(IXMLDOMElement* element, win::Variant& typed) {
    typed.Clear();
    const std::wstring type = XmlDataType(element);
    const std::wstring text = TextOf(element);
    if (HasChildElement(element) || (type == xml_data_type::kBinary && !Base64Size(text))) {
        return;
    }
    if (type == xml_data_type::kInt32) {
        if (const auto value = ParseInt32(text)) {
            SetInt32(typed, *value);
        }
    } else if (type == xml_data_type::kInt64) {
        if (const auto value = ParseInt64(text)) {
            SetInt64(typed, *value);
        }
    } else if (type == xml_data_type::kDouble) {
        if (const auto value = ParseDouble(text)) {
            SetDouble(typed, *value);
        }
    } else if (FAILED(element->get_nodeTypedValue(typed.Put()))) {
        VARIANT* const raw = typed.Put();
        raw->bstrVal = win::Bstr(text).Detach();
        raw->vt = VT_BSTR;
    }
}

bool ChangeType(const win::Variant& typed, win::Variant& converted, VARTYPE type) {
    const VARIANT& value = typed.Get();
    if (value.vt == VT_EMPTY || (value.vt & VT_ARRAY) != 0 || (value.vt == VT_R8 && !std::isfinite(value.dblVal))) {
        return false;
    }
    return SUCCEEDED(VariantChangeTypeEx(converted.Put(), const_cast<VARIANT*>(&value), kUsEnglish, 0, type));
}

} // namespace

XmlValue::XmlValue(std::int32_t value) : m_dataType(xml_data_type::kInt32), m_text(std::to_wstring(value)) {
    SetInt32(m_typed, value);
}

XmlValue::XmlValue(std::int64_t value) : m_dataType(xml_data_type::kInt64), m_text(std::to_wstring(value)) {
    SetInt64(m_typed, value);
}

XmlValue::XmlValue(double value)
    : m_dataType(xml_data_type::kDouble), m_text(DoubleText(value)), m_isDelicate(!std::isfinite(value)) {
    SetDouble(m_typed, value);
}

XmlValue::XmlValue(std::wstring_view text)
    : m_dataType(xml_data_type::kString), m_typed(text), m_text(text), m_keepsSpace(HasFragileSpace(text)),
      m_isDelicate(m_keepsSpace) {}

XmlValue::XmlValue(std::span<const unsigned char> bytes)
    : m_dataType(xml_data_type::kBinary), m_text(Base64Text(bytes)) {
    *m_typed.Put() = TypedArray(bytes);
}

bool XmlValue::WriteTo(IXMLDOMElement* element) const {
    if ((m_keepsSpace &&
         FAILED(element->setAttribute(win::Bstr(kSpaceAttribute).Get(), win::Variant(kPreserve).Get()))) ||
        FAILED(element->put_dataType(win::Bstr(m_dataType).Get()))) {
        return false;
    }
    const HRESULT typed = element->put_nodeTypedValue(m_typed.Get());
    const bool saysTheSame = (SUCCEEDED(typed) || m_text.empty()) && TextOf(element) == m_text;
    return saysTheSame || SUCCEEDED(element->put_text(win::Bstr(m_text).Get()));
}

bool XmlValue::IsPossible() const {
    return IsXmlText(m_text);
}

size_t XmlValue::FileBytes() const {
    constexpr size_t kReferenceBytes = 5; // "&amp;"
    constexpr size_t kUtf8Bytes = 3;      // of a character that is not ASCII
    size_t bytes = 0;
    for (const wchar_t c : m_text) {
        const bool referred = c == L'&' || c == L'<' || c == L'>' || c == L'\r';
        bytes += referred ? kReferenceBytes : c < 0x80 ? 1 : kUtf8Bytes;
    }
    return bytes;
}

std::wstring XmlDataType(IXMLDOMElement* element) {
    win::Variant type;
    if (element->get_dataType(type.Put()) == S_OK && !type.Text().empty()) {
        return std::wstring(type.Text());
    }
    win::ComPtr<IXMLDOMNamedNodeMap> attributes;
    win::ComPtr<IXMLDOMNode> attribute;
    if (element->get_attributes(attributes.Put()) != S_OK ||
        attributes->getQualifiedItem(win::Bstr(kDataTypeName).Get(), win::Bstr(kDataTypeNamespace).Get(),
                                     attribute.Put()) != S_OK) {
        return {};
    }
    return TextOf(attribute.Get());
}

bool IsXmlValue(IXMLDOMElement* element) {
    return !XmlDataType(element).empty();
}

std::optional<std::int32_t> ReadInt32(IXMLDOMElement* element) {
    win::Variant typed;
    win::Variant converted;
    ReadTyped(element, typed);
    if (typed.Type() == VT_BSTR) {
        return ParseInt32(typed.Text());
    }
    return ChangeType(typed, converted, VT_I4) ? std::optional<std::int32_t>(converted.Get().lVal) : std::nullopt;
}

std::optional<std::int64_t> ReadInt64(IXMLDOMElement* element) {
    win::Variant typed;
    win::Variant converted;
    ReadTyped(element, typed);
    if (typed.Type() == VT_BSTR) {
        return ParseInt64(typed.Text());
    }
    return ChangeType(typed, converted, VT_I8) ? std::optional<std::int64_t>(converted.Get().llVal) : std::nullopt;
}

std::optional<double> ReadDouble(IXMLDOMElement* element) {
    win::Variant typed;
    win::Variant converted;
    ReadTyped(element, typed);
    if (typed.Type() == VT_BSTR) {
        return ParseDouble(typed.Text());
    }
    if (typed.Type() == VT_R8) {
        return typed.Get().dblVal;
    }
    return ChangeType(typed, converted, VT_R8) ? std::optional(converted.Get().dblVal) : std::nullopt;
}

std::optional<std::wstring> ReadText(IXMLDOMElement* element) {
    win::Variant typed;
    ReadTyped(element, typed);
    if (typed.Type() == VT_BSTR) {
        return std::wstring(typed.Text());
    }
    const bool hasText = typed.Type() != VT_EMPTY && (typed.Type() & VT_ARRAY) == 0;
    return hasText ? std::optional(TextOf(element)) : std::nullopt;
}

std::optional<std::vector<unsigned char>> ReadBytes(IXMLDOMElement* element) {
    win::Variant typed;
    ReadTyped(element, typed);
    if (typed.Type() != (VT_ARRAY | VT_UI1) || XmlDataType(element) != xml_data_type::kBinary) {
        return std::nullopt;
    }
    LONG last = -1;
    void* data = nullptr;
    SAFEARRAY* const array = typed.Get().parray;
    if (FAILED(SafeArrayGetUBound(array, 1, &last)) || FAILED(SafeArrayAccessData(array, &data))) {
        return std::nullopt;
    }
    const auto* const begin = static_cast<const unsigned char*>(data);
    std::vector<unsigned char> bytes(begin, begin + last + 1);
    SafeArrayUnaccessData(array);
    return bytes;
}
