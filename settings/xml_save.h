// xml_save_t: writes settings to an XML file; one element a section, one element a value.
//
// Units: sizes in bytes. Owner: its document, bound to the first file until it is closed; the file is written by close
// and by nothing else. Threads: one at a time, of the COM apartment of the open.
// Errors: false; nothing is changed then. A file that cannot be written stays as it was.
#pragma once

#include <optional>

#include "settings/base_save.h"
#include "settings/xml_document.h"
#include "settings/xml_value.h"

// What a file of limited size has left, or what an element takes of it.
struct XmlRoom {
    size_t bytes = 0;
    size_t markup = 0; // tags and other pieces
};

class xml_save_t final : public base_save_t {
  public:
    // prefix: the path, below the root element, that all sections are below.
    explicit xml_save_t(std::wstring prefix) : m_prefix(std::move(prefix)) {}

    // With a file open, an empty path or the same one switches the section; any other is refused. A file that is no
    // document is replaced by a new one; one that cannot be read or replaced, or may be somebody else's document, is
    // refused.
    bool open_file(const std::wstring& section, const std::wstring& file) override;
    bool open_key(const std::wstring& section, HKEY root) override;
    void close() override;
    bool delete_section(const std::wstring& section) override;
    bool save_int32(const std::wstring& key, std::int32_t value) override;
    bool save_double(const std::wstring& key, double value) override;
    bool save_int64(const std::wstring& key, std::int64_t value) override;
    bool save_binary(const std::wstring& key, const void* data, std::uint32_t size) override;
    bool save_string(const std::wstring& key, const std::wstring& value) override;

  private:
    [[nodiscard]] bool OpenDocument(const std::wstring& section, const std::wstring& file);
    // False for one that there is no room for, or that runs through a value or ends in one.
    [[nodiscard]] bool MakeSection(const std::wstring& path);
    [[nodiscard]] bool Save(const std::wstring& key, const XmlValue& value);
    [[nodiscard]] bool Replace(const std::wstring& path, IXMLDOMElement* existing, const XmlValue& value);
    [[nodiscard]] bool Append(const std::wstring& path, const XmlValue& value);
    // Whether the file, in its layout, stays one that loads with so much more.
    [[nodiscard]] bool HasRoomFor(const XmlRoom& need);
    void TakeRoom(const XmlRoom& need);

    std::optional<XmlDocument> m_document;
    std::wstring m_file;
    std::wstring m_section;
    std::wstring m_prefix;
    XmlRoom m_room;             // at least so much is left
    bool m_roomIsExact = false; // nothing has changed since it was found out
};
