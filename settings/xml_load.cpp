#include "settings/xml_load.h"

#include <cstring>
#include <limits>
#include <utility>

#include "settings/failure.h"
#include "settings/file_bytes.h"
#include "settings/xml_names.h"
#include "settings/xml_nodes.h"
#include "settings/xml_value.h"

namespace {

constexpr std::int32_t kAbsentInt32 = 0x7FFFFFFF;
constexpr std::int64_t kAbsentInt64 = 0x7FFFFFFFFFFFFFFF;
constexpr wchar_t kAbsentText[] = L"#?#?";

std::vector<std::wstring> NamesOfChildren(IXMLDOMNode* parent) {
    std::vector<std::wstring> names;
    ForEachChild(parent, [&names](IXMLDOMNode* child) {
        win::Bstr name;
        child->get_nodeName(name.Put());
        names.emplace_back(name.View());
        return true;
    });
    return names;
}

} // namespace

bool xml_load_t::open_file(const std::wstring& section, const std::wstring& file) {
    return Guarded([&] {
        const auto path = EffectiveSectionPath(m_prefix, section);
        if (!path || (m_document && !file.empty() && file != m_file) || (!m_document && !OpenDocument(file))) {
            return false;
        }
        m_section = *path;
        m_childNames.reset();
        return true;
    });
}

bool xml_load_t::open_key(const std::wstring& /*section*/, HKEY /*root*/) {
    return false;
}

void xml_load_t::close() {
    m_document.reset();
    m_childNames.reset();
    m_file.clear();
    m_section.clear();
}

std::uint32_t xml_load_t::child_count() {
    return Guarded([&] { return static_cast<std::uint32_t>(ChildNames().size()); });
}

std::wstring xml_load_t::child_name(std::uint32_t index) {
    return Guarded([&] {
        const std::vector<std::wstring>& names = ChildNames();
        return index < names.size() ? names[index] : std::wstring();
    });
}

std::uint32_t xml_load_t::value_size(const std::wstring& key) {
    return Guarded([&]() -> std::uint32_t {
        const auto element = FindValue(key);
        const std::wstring type = element ? XmlDataType(element.Get()) : std::wstring();
        if (type == xml_data_type::kInt32) {
            return load_int32(key, kAbsentInt32) == kAbsentInt32 ? kAbsentValue : sizeof(std::int32_t);
        }
        if (type == xml_data_type::kInt64) {
            return load_int64(key, kAbsentInt64) == kAbsentInt64 ? kAbsentValue : sizeof(std::int64_t);
        }
        if (type == xml_data_type::kDouble) {
            return ReadDouble(element.Get()) ? sizeof(double) : kAbsentValue;
        }
        if (type == xml_data_type::kString) {
            const std::wstring text = load_string(key, kAbsentText);
            return text == kAbsentText ? kAbsentValue : static_cast<std::uint32_t>(text.size() * sizeof(wchar_t));
        }
        const auto bytes = type == xml_data_type::kBinary ? ReadBytes(element.Get()) : std::nullopt;
        return bytes ? static_cast<std::uint32_t>(bytes->size()) : kAbsentValue;
    });
}

std::int32_t xml_load_t::load_int32(const std::wstring& key, std::int32_t fallback) {
    return Guarded([&] {
        const auto element = FindValue(key);
        return element ? ReadInt32(element.Get()).value_or(fallback) : fallback;
    });
}

double xml_load_t::load_double(const std::wstring& key, double fallback) {
    return Guarded([&] {
        const auto element = FindValue(key);
        return element ? ReadDouble(element.Get()).value_or(fallback) : fallback;
    });
}

std::int64_t xml_load_t::load_int64(const std::wstring& key, std::int64_t fallback) {
    return Guarded([&] {
        const auto element = FindValue(key);
        return element ? ReadInt64(element.Get()).value_or(fallback) : fallback;
    });
}

bool xml_load_t::load_binary(const std::wstring& key, void* buffer, std::uint32_t& size) {
    return Guarded([&] {
        const std::uint32_t capacity = size;
        size = 0;
        const auto element = FindValue(key);
        const auto bytes = element ? ReadBytes(element.Get()) : std::nullopt;
        if (!bytes) {
            return false;
        }
        size = static_cast<std::uint32_t>(bytes->size());
        if (bytes->size() > capacity || (!bytes->empty() && buffer == nullptr)) {
            return false;
        }
        if (!bytes->empty()) {
            std::memcpy(buffer, bytes->data(), bytes->size());
        }
        return true;
    });
}

std::wstring xml_load_t::load_string(const std::wstring& key, const std::wstring& fallback) {
    return Guarded([&] {
        const auto element = FindValue(key);
        return element ? ReadText(element.Get()).value_or(fallback) : fallback;
    });
}

bool xml_load_t::OpenDocument(const std::wstring& file) {
    std::string bytes;
    XmlDocument document;
    if (ReadFileBytes(file, kMaxDocumentBytes, bytes) != ReadStatus::Read || !document.Create() ||
        document.LoadBytes(bytes) != LoadStatus::Loaded) {
        return false;
    }
    m_document = std::move(document);
    m_file = file;
    return true;
}

win::ComPtr<IXMLDOMElement> xml_load_t::FindValue(const std::wstring& key) const {
    const auto path = m_document ? ValuePath(m_section, key) : std::nullopt;
    return path ? m_document->Find(*path) : nullptr;
}

const std::vector<std::wstring>& xml_load_t::ChildNames() {
    if (!m_childNames) {
        const auto section = m_document ? m_document->Find(m_section) : nullptr;
        m_childNames = section ? NamesOfChildren(section.Get()) : std::vector<std::wstring>();
    }
    return *m_childNames;
}
