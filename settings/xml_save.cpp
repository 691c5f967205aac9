#include "settings/xml_save.h"

#include <algorithm>
#include <utility>

#include "settings/failure.h"
#include "settings/file_bytes.h"
#include "settings/file_replace.h"
#include "settings/xml_layout.h"
#include "settings/xml_names.h"

namespace {

// The tags of a value besides its names, and the line breaks between them.
constexpr std::size_t kTagBytes = 200;
// Each name stands in two tags, and a character takes up to three bytes.
constexpr std::size_t kBytesPerPathChar = 6;

// At most so many bytes of a file stand for the elements on the path.
std::size_t ElementBytes(const std::wstring& path) {
    return kBytesPerPathChar * path.size() + kTagBytes;
}

// The document in the layout of the file, as save writes it.
bool FileContent(const std::wstring& xml, std::string& bytes) {
    XmlDocument laidOut;
    if (!laidOut.Create()) {
        return false;
    }
    laidOut.KeepSpace();
    return laidOut.LoadText(OneTagPerLine(xml)) && laidOut.SaveBytes(bytes);
}

// A document of that content has at most so many bytes in the layout of the file: it may lack the declaration, and a
// line break before each tag.
std::size_t MostLaidOutBytes(const std::string& content) {
    constexpr std::size_t kDeclarationBytes = 40;
    return content.size() + kDeclarationBytes +
           static_cast<std::size_t>(std::count(content.begin(), content.end(), '<'));
}

// Goes the whole way through a file and back with the value alone.
bool ReadsBack(const XmlValue& value) {
    XmlDocument document;
    std::string bytes;
    if (!document.Create() || !document.LoadFresh()) {
        return false;
    }
    const auto element = document.NewElement(L"value");
    const auto root = document.Find({});
    if (!element || !value.WriteTo(element.Get()) || FAILED(root->appendChild(element.Get(), nullptr)) ||
        !FileContent(document.Text(), bytes) || !document.LoadBytes(bytes)) {
        return false;
    }
    const auto read = document.Find(L"/value");
    return read && ReadText(read.Get()) == value.Text();
}

} // namespace

bool xml_save_t::open_file(const std::wstring& section, const std::wstring& file) {
    return Guarded([&] {
        const auto path = EffectiveSectionPath(m_prefix, section);
        if (!path) {
            return false;
        }
        if (!m_document) {
            return OpenDocument(*path, file);
        }
        if ((!file.empty() && file != m_file) || !MakeSection(*path)) {
            return false;
        }
        m_section = *path;
        return true;
    });
}

bool xml_save_t::open_key(const std::wstring& /*section*/, HKEY /*root*/) {
    return false;
}

void xml_save_t::close() {
    Guarded([&] {
        const auto document = std::exchange(m_document, std::nullopt);
        const std::wstring file = std::exchange(m_file, {});
        m_section.clear();
        std::string bytes;
        if (document && FileContent(document->Text(), bytes) && bytes.size() <= kMaxDocumentBytes) {
            static_cast<void>(ReplaceFileBytes(file, bytes)); // nobody is told
        }
    });
}

bool xml_save_t::delete_section(const std::wstring& section) {
    return Guarded([&] {
        const auto path = EffectiveSectionPath(m_prefix, section);
        // Without a name it would be all that there is.
        if (!m_document || !path || path == EffectiveSectionPath(m_prefix, {})) {
            return false;
        }
        const auto element = m_document->Find(*path);
        win::ComPtr<IXMLDOMNode> parent;
        return element && element->get_parentNode(parent.Put()) == S_OK &&
               SUCCEEDED(parent->removeChild(element.Get(), nullptr));
    });
}

bool xml_save_t::save_int32(const std::wstring& key, std::int32_t value) {
    return Guarded([&] { return Save(key, XmlValue(value)); });
}

bool xml_save_t::save_double(const std::wstring& key, double value) {
    return Guarded([&] { return Save(key, XmlValue(value)); });
}

bool xml_save_t::save_int64(const std::wstring& key, std::int64_t value) {
    return Guarded([&] { return Save(key, XmlValue(value)); });
}

bool xml_save_t::save_binary(const std::wstring& key, const void* data, std::uint32_t size) {
    return Guarded([&] {
        if ((data == nullptr && size > 0) || size > kMaxDocumentBytes) {
            return false;
        }
        return Save(key, XmlValue(std::span(static_cast<const unsigned char*>(data), size)));
    });
}

bool xml_save_t::save_string(const std::wstring& key, const std::wstring& value) {
    return Guarded([&] {
        RequirePossibleLength(value);
        return value.size() <= kMaxDocumentBytes && Save(key, XmlValue(std::wstring_view(value)));
    });
}

bool xml_save_t::OpenDocument(const std::wstring& section, const std::wstring& file) {
    std::string bytes;
    const ReadStatus status = ReadFileBytes(file, kMaxDocumentBytes, bytes);
    XmlDocument document;
    if (status == ReadStatus::Unreadable || !IsReplaceable(file) || !document.Create()) {
        return false;
    }
    const bool loaded = status == ReadStatus::Read && document.LoadBytes(bytes);
    if ((!loaded && !document.LoadFresh()) || !document.HasPlainRoot() || !document.FindOrCreate(section)) {
        return false;
    }
    m_document = document;
    m_file = file;
    m_section = section;
    m_roomBytes = 0; // the first save asks
    return true;
}

bool xml_save_t::MakeSection(const std::wstring& path) {
    const std::size_t bytes = m_document->Find(path) ? 0 : ElementBytes(path);
    if (!HasRoomFor(bytes) || !m_document->FindOrCreate(path)) {
        return false;
    }
    m_roomBytes -= bytes;
    return true;
}

bool xml_save_t::Save(const std::wstring& key, const XmlValue& value) {
    const auto path = m_document ? ValuePath(m_section, key) : std::nullopt;
    if (!path || !value.IsPossible()) {
        return false;
    }
    const std::size_t bytes = value.FileBytes() + ElementBytes(*path);
    if (!HasRoomFor(bytes) || (value.IsDelicate() && !ReadsBack(value))) {
        return false;
    }
    const auto existing = m_document->Find(*path);
    const bool saved = existing ? Replace(existing.Get(), value) : Append(*path, value);
    m_roomBytes -= saved ? bytes : 0;
    return saved;
}

// A new element takes the place: some platforms cannot take attributes with a prefix away again.
bool xml_save_t::Replace(IXMLDOMElement* existing, const XmlValue& value) {
    if (HasChildElement(existing)) {
        return false; // it is a section
    }
    win::ComPtr<IXMLDOMNode> parent;
    win::Bstr name;
    if (existing->get_parentNode(parent.Put()) != S_OK || FAILED(existing->get_nodeName(name.Put()))) {
        return false;
    }
    const auto element = m_document->NewElement(std::wstring(name.View()));
    return element && CopyPlainAttributes(existing, element.Get()) && value.WriteTo(element.Get()) &&
           SUCCEEDED(parent->replaceChild(element.Get(), existing, nullptr));
}

bool xml_save_t::Append(const std::wstring& path, const XmlValue& value) {
    const std::size_t separator = path.rfind(L'/');
    const auto element = m_document->NewElement(path.substr(separator + 1));
    if (!element || !value.WriteTo(element.Get())) {
        return false;
    }
    const auto parent = m_document->FindOrCreate(path.substr(0, separator));
    return parent && SUCCEEDED(parent->appendChild(element.Get(), nullptr));
}

bool xml_save_t::HasRoomFor(std::size_t bytes) {
    std::string content;
    if (bytes > m_roomBytes && m_document->SaveBytes(content)) {
        const std::size_t laidOutBytes = MostLaidOutBytes(content);
        m_roomBytes = laidOutBytes < kMaxDocumentBytes ? kMaxDocumentBytes - laidOutBytes : 0;
    }
    return bytes <= m_roomBytes;
}
