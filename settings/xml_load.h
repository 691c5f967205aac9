// xml_load_t: reads settings from an XML file; one element a section, one element a value.
//
// Units: sizes in bytes: of the characters of a string, of what a base64 text stands for. Owner: its document, bound to
// the first file until it is closed. Threads: one at a time, of the COM apartment of the open.
// Errors: the default, false or kAbsentValue.
#pragma once

#include <optional>
#include <vector>

#include "settings/base_load.h"
#include "settings/xml_document.h"

class xml_load_t final : public base_load_t {
  public:
    // prefix: the path, below the root element, that all sections are below.
    explicit xml_load_t(std::wstring prefix) : m_prefix(std::move(prefix)) {}

    // With a file open, an empty path or the same one switches the section; any other is refused.
    bool open_file(const std::wstring& section, const std::wstring& file) override;
    bool open_key(const std::wstring& section, HKEY root) override;
    void close() override;
    // All child nodes count, values too.
    std::uint32_t child_count() override;
    std::wstring child_name(std::uint32_t index) override;
    // A value that equals its type's sentinel (the greatest number, or the text "#?#?") counts as absent.
    std::uint32_t value_size(const std::wstring& key) override;
    std::int32_t load_int32(const std::wstring& key, std::int32_t fallback) override;
    double load_double(const std::wstring& key, double fallback) override;
    std::int64_t load_int64(const std::wstring& key, std::int64_t fallback) override;
    bool load_binary(const std::wstring& key, void* buffer, std::uint32_t& size) override;
    std::wstring load_string(const std::wstring& key, const std::wstring& fallback) override;

  private:
    [[nodiscard]] bool OpenDocument(const std::wstring& file);
    // Null when there is no such value.
    [[nodiscard]] win::ComPtr<IXMLDOMElement> FindValue(const std::wstring& key) const;
    [[nodiscard]] const std::vector<std::wstring>& ChildNames();

    std::optional<XmlDocument> m_document;
    std::wstring m_file;
    std::wstring m_section;
    std::wstring m_prefix;
    std::optional<std::vector<std::wstring>> m_childNames; // of the section, once it was asked for them
};
