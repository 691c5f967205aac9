#include "settings/xml_save.h"

#include <algorithm>
#include <utility>

#include "settings/failure.h"
#include "settings/file_bytes.h"
#include "settings/file_replace.h"
#include "settings/xml_layout.h"
#include "settings/xml_names.h"
#include "settings/xml_survey.h"

namespace {

// The tags of a value besides its names, and the line breaks between them.
constexpr size_t kTagBytes = 200;
// Each name stands in two tags, and a character takes up to three bytes.
constexpr size_t kBytesPerPathChar = 6;

constexpr wchar_t kScratchPath[] = L"/value";

std::wstring LastName(const std::wstring& path) {
    return path.substr(path.rfind(L'/') + 1);
}

// At most so much of a file stands for the elements on the path.
XmlRoom RoomOf(const std::wstring& path) {
    const auto names = static_cast<size_t>(std::count(path.begin(), path.end(), L'/'));
    return {kBytesPerPathChar * path.size() + kTagBytes, 2 * names};
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

// What a document of that content leaves in the layout of the file, at least: it may lack the declaration, and a line
// break before each tag.
XmlRoom RoomBeside(const std::string& content) {
    constexpr size_t kDeclarationBytes = 40;
    const auto markup = static_cast<size_t>(std::count(content.begin(), content.end(), '<')) + 1;
    const size_t bytes = content.size() + kDeclarationBytes + markup;
    return {kMaxDocumentBytes - std::min(bytes, kMaxDocumentBytes), kMaxMarkup - std::min(markup, kMaxMarkup)};
}

// Goes the whole way through a file and back with the value alone.
bool ReadsBack(const XmlValue& value) {
    XmlDocument document;
    std::string bytes;
    if (!document.Create() || !document.LoadFresh()) {
        return false;
    }
    const auto element = document.NewElement(L"value");
    if (!element || !value.WriteTo(element.Get()) || !document.Append(kScratchPath, element.Get()) ||
        !FileContent(document.Text(), bytes) || document.LoadBytes(bytes) != LoadStatus::Loaded) {
        return false;
    }
    const auto read = document.Find(kScratchPath);
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
            (void)ReplaceFileBytes(file, bytes); // nobody is told
        }
    });
}

bool xml_save_t::delete_section(const std::wstring& section) {
    return Guarded([&] {
        const auto path = EffectiveSectionPath(m_prefix, section);
        // Without a name it would be all that there is.
        m_roomIsExact = false;
        return m_document && path && path != EffectiveSectionPath(m_prefix, {}) && m_document->Remove(*path);
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
    const LoadStatus loaded = status == ReadStatus::Read ? document.LoadBytes(bytes) : LoadStatus::NoDocument;
    if (loaded == LoadStatus::Refused || (loaded == LoadStatus::NoDocument && !document.LoadFresh()) ||
        !document.HasPlainRoot() || !document.FindOrCreate(section)) {
        return false;
    }
    m_document = std::move(document);
    m_file = file;
    m_section = section;
    m_room = {}; // the first save asks
    m_roomIsExact = false;
    return true;
}

bool xml_save_t::MakeSection(const std::wstring& path) {
    const XmlRoom need = m_document->Find(path) ? XmlRoom() : RoomOf(path);
    if (!HasRoomFor(need) || !m_document->FindOrCreate(path)) {
        return false;
    }
    TakeRoom(need);
    return true;
}

bool xml_save_t::Save(const std::wstring& key, const XmlValue& value) {
    const auto path = m_document ? ValuePath(m_section, key) : std::nullopt;
    if (!path || !value.IsPossible()) {
        return false;
    }
    XmlRoom need = RoomOf(*path);
    need.bytes += value.FileBytes();
    if (!HasRoomFor(need) || (value.IsDelicate() && !ReadsBack(value))) {
        return false;
    }
    const auto existing = m_document->Find(*path);
    if (!(existing ? Replace(*path, existing.Get(), value) : Append(*path, value))) {
        return false;
    }
    TakeRoom(need);
    return true;
}

// A new element takes the place: some platforms cannot take attributes with a prefix away again.
bool xml_save_t::Replace(const std::wstring& path, IXMLDOMElement* existing, const XmlValue& value) {
    if (HasChildElement(existing)) {
        return false; // it is a section
    }
    const auto element = m_document->NewElement(LastName(path));
    return element && CopyPlainAttributes(existing, element.Get()) && value.WriteTo(element.Get()) &&
           m_document->Replace(path, element.Get());
}

bool xml_save_t::Append(const std::wstring& path, const XmlValue& value) {
    const auto element = m_document->NewElement(LastName(path));
    return element && value.WriteTo(element.Get()) && m_document->Append(path, element.Get());
}

bool xml_save_t::HasRoomFor(const XmlRoom& need) {
    const auto fits = [&] { return need.bytes <= m_room.bytes && need.markup <= m_room.markup; };
    std::string content;
    if (!fits() && !m_roomIsExact && m_document->SaveBytes(content)) {
        m_room = RoomBeside(content);
        m_roomIsExact = true;
    }
    return fits();
}

void xml_save_t::TakeRoom(const XmlRoom& need) {
    m_room.bytes -= need.bytes;
    m_room.markup -= need.markup;
    m_roomIsExact = false;
}
