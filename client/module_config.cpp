#include "client/module_config.h"

#include <limits>

#include "win/bstr.h"

namespace client {

namespace {

// The filter does not look at the tag; whoever passes a VARIANT on does.
VARIANT Tagged(VARTYPE type) {
    VARIANT value{};
    V_VT(&value) = type;
    return value;
}

// The record is read, or written to, as its key tells.
VARIANT ReferenceTo(const void* record) {
    VARIANT value = Tagged(VT_BYREF);
    V_BYREF(&value) = const_cast<void*>(record);
    return value;
}

win::Bstr EmptyText() {
    return win::Bstr(WideStringView());
}

win::Bstr TextOf(const std::optional<WideString>& text) {
    return text ? win::Bstr(*text) : win::Bstr();
}

// The filter's copy, which is freed.
WideString TakeText(BSTR text) {
    win::Bstr owned;
    *owned.Put() = text;
    return WideString(owned.View());
}

// Data of no bytes is there all the same, and differs from none.
const BYTE* AddressOf(std::span<const BYTE> data) {
    static constexpr BYTE kNoBytes = 0;
    return data.empty() ? &kNoBytes : data.data();
}

} // namespace

HRESULT ModuleConfig::Connect(IUnknown* object) {
    m_config.Reset();
    return object == nullptr ? E_NOINTERFACE : object->QueryInterface(IID_IModuleConfig, m_config.PutVoid());
}

HRESULT ModuleConfig::Set(const GUID& key, const VARIANT& value) const {
    return m_config ? m_config->SetValue(&key, &value) : E_NOINTERFACE;
}

HRESULT ModuleConfig::Get(const GUID& key, VARIANT& value) const {
    return m_config ? m_config->GetValue(&key, &value) : E_NOINTERFACE;
}

HRESULT ModuleConfig::GetTrack(INT32 index, TrackRow& row) const {
    TrackRow read{index, 0, 0, 0, EmptyText(), EmptyText(), MuxTrackType_Unknown};
    TrackSettings record{index, 0, 0, 0, read.language.Detach(), read.name.Detach(), MuxTrackType_Unknown};
    VARIANT value = ReferenceTo(&record);
    const HRESULT hr = Get(MKVMUX_TrackInfo, value);
    // The filter has replaced the strings, or left ours there.
    *read.language.Put() = record.language;
    *read.name.Put() = record.name;
    if (SUCCEEDED(hr)) {
        read.enabled = record.bEnabled;
        read.isDefault = record.bDefault;
        read.reserved = record.bReserved;
        read.trackType = record.trackType;
        row = std::move(read);
    }
    return hr;
}

HRESULT ModuleConfig::SetTrack(const TrackRow& row) const {
    const TrackSettings record{row.index,          row.enabled,    row.isDefault, row.reserved,
                               row.language.Get(), row.name.Get(), row.trackType};
    return Set(MKVMUX_TrackInfo, ReferenceTo(&record));
}

HRESULT ModuleConfig::Attach(const Attachment& attachment) const {
    const win::Bstr fileName = TextOf(attachment.fileName);
    const win::Bstr description = TextOf(attachment.description);
    MuxAttachment record{};
    record.fileName = fileName.Get();
    record.description = description.Get();
    record.uid = attachment.uid;
    if (attachment.mimeType) {
        record.mimeType = const_cast<char*>(attachment.mimeType->c_str()); // the filter reads it only
    }
    if (attachment.data) {
        if (attachment.data->size() > std::numeric_limits<UINT32>::max()) {
            return E_INVALIDARG;
        }
        record.dataSize = static_cast<UINT32>(attachment.data->size());
        record.data = const_cast<BYTE*>(AddressOf(*attachment.data)); // as above
    }
    return Set(MKVMUX_Attachment, ReferenceTo(&record));
}

HRESULT ModuleConfig::GetNumber(const GUID& key, UINT32& number) const {
    VARIANT value = Tagged(VT_UI4);
    const HRESULT hr = Get(key, value);
    number = SUCCEEDED(hr) ? V_UI4(&value) : number;
    return hr;
}

HRESULT ModuleConfig::SetNumber(const GUID& key, UINT32 number) const {
    VARIANT value = Tagged(VT_UI4);
    V_UI4(&value) = number;
    return Set(key, value);
}

HRESULT ModuleConfig::GetDocType(MuxDocType& docType) const {
    UINT32 number = 0;
    const HRESULT hr = GetNumber(MKVMUX_DocType, number);
    if (SUCCEEDED(hr)) {
        docType = number == MuxDocType_Webm ? MuxDocType_Webm : MuxDocType_Matroska;
    }
    return hr;
}

HRESULT ModuleConfig::SetDocType(MuxDocType docType) const {
    return SetNumber(MKVMUX_DocType, static_cast<UINT32>(docType));
}

HRESULT ModuleConfig::GetProfile(MuxProfile& profile) const {
    UINT32 number = 0;
    const HRESULT hr = GetNumber(MKVMUX_Profile, number);
    if (SUCCEEDED(hr)) {
        profile = number == MuxProfile_Strict ? MuxProfile_Strict : MuxProfile_Compatible;
    }
    return hr;
}

HRESULT ModuleConfig::SetProfile(MuxProfile profile) const {
    return SetNumber(MKVMUX_Profile, static_cast<UINT32>(profile));
}

HRESULT ModuleConfig::GetFlags(INT32 index, MuxTrackFlags& flags) const {
    MuxTrackFlags read{index, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset};
    VARIANT value = ReferenceTo(&read);
    const HRESULT hr = Get(MKVMUX_TrackFlags, value);
    flags = SUCCEEDED(hr) ? read : flags;
    return hr;
}

HRESULT ModuleConfig::SetFlags(const MuxTrackFlags& flags) const {
    return Set(MKVMUX_TrackFlags, ReferenceTo(&flags));
}

HRESULT ModuleConfig::GetColour(MuxTrackColour& colour) const {
    MuxTrackColour read = colour;
    VARIANT value = ReferenceTo(&read);
    const HRESULT hr = Get(MKVMUX_TrackColour, value);
    colour = SUCCEEDED(hr) ? read : colour;
    return hr;
}

HRESULT ModuleConfig::SetColour(const MuxTrackColour& colour) const {
    return Set(MKVMUX_TrackColour, ReferenceTo(&colour));
}

HRESULT ModuleConfig::GetTitle(WideString& title) const {
    VARIANT value = Tagged(VT_BSTR);
    const HRESULT hr = Get(MKVMUX_Title, value);
    if (SUCCEEDED(hr)) {
        win::Bstr text;
        *text.Put() = V_BSTR(&value);
        title = text.View();
    }
    return hr;
}

HRESULT ModuleConfig::SetTitle(WideStringView title) const {
    const win::Bstr text(title);
    VARIANT value = Tagged(VT_BSTR);
    V_BSTR(&value) = text.Get();
    return Set(MKVMUX_Title, value);
}

HRESULT ModuleConfig::GetSeed(UINT64& seed) const {
    VARIANT value = Tagged(VT_UI8);
    const HRESULT hr = Get(MKVMUX_Seed, value);
    seed = SUCCEEDED(hr) ? V_UI8(&value) : seed;
    return hr;
}

HRESULT ModuleConfig::SetSeed(UINT64 seed) const {
    VARIANT value = Tagged(VT_UI8);
    V_UI8(&value) = seed;
    return Set(MKVMUX_Seed, value);
}

HRESULT ModuleConfig::GetTrackStatistics(bool& isWritten) const {
    UINT32 number = 0;
    const HRESULT hr = GetNumber(MKVMUX_TrackStatistics, number);
    isWritten = SUCCEEDED(hr) ? number != 0 : isWritten;
    return hr;
}

HRESULT ModuleConfig::SetTrackStatistics(bool isWritten) const {
    return SetNumber(MKVMUX_TrackStatistics, isWritten ? 1 : 0);
}

HRESULT ModuleConfig::AddChapter(const Chapter& chapter) const {
    const win::Bstr title(chapter.title);
    const win::Bstr language(chapter.language);
    const MuxChapter record{MuxListIndex_Add,
                            chapter.level,
                            chapter.start,
                            chapter.end,
                            chapter.uid,
                            static_cast<BYTE>(chapter.hidden ? 1 : 0),
                            static_cast<BYTE>(chapter.disabled ? 1 : 0),
                            title.Get(),
                            language.Get()};
    return Set(MKVMUX_Chapter, ReferenceTo(&record));
}

HRESULT ModuleConfig::MarkChapter(WideStringView title, WideStringView language) const {
    Chapter chapter;
    chapter.start = MuxChapterTime_Now;
    chapter.title = title;
    chapter.language = language;
    return AddChapter(chapter);
}

HRESULT ModuleConfig::GetChapter(INT32 index, Chapter& chapter) const {
    MuxChapter record{};
    record.index = index;
    VARIANT value = ReferenceTo(&record);
    const HRESULT hr = Get(MKVMUX_Chapter, value);
    if (SUCCEEDED(hr)) {
        chapter = {record.level,
                   record.start,
                   record.end,
                   record.uid,
                   record.hidden != 0,
                   record.disabled != 0,
                   TakeText(record.title),
                   TakeText(record.language)};
    }
    return hr;
}

HRESULT ModuleConfig::ClearChapters() const {
    MuxChapter record{};
    record.index = MuxListIndex_Clear;
    return Set(MKVMUX_Chapter, ReferenceTo(&record));
}

HRESULT ModuleConfig::AddTag(const Tag& tag) const {
    const win::Bstr target(tag.target);
    const win::Bstr name(tag.name);
    const win::Bstr text(tag.value);
    const win::Bstr language(tag.language);
    const MuxTag record{MuxListIndex_Add, tag.track,  tag.level,  tag.targetType,
                        target.Get(),     name.Get(), text.Get(), language.Get()};
    return Set(MKVMUX_Tag, ReferenceTo(&record));
}

HRESULT ModuleConfig::GetTag(INT32 index, Tag& tag) const {
    MuxTag record{};
    record.index = index;
    VARIANT value = ReferenceTo(&record);
    const HRESULT hr = Get(MKVMUX_Tag, value);
    if (SUCCEEDED(hr)) {
        tag = {record.track,          record.level,           record.targetType,        TakeText(record.target),
               TakeText(record.name), TakeText(record.value), TakeText(record.language)};
    }
    return hr;
}

HRESULT ModuleConfig::ClearTags() const {
    MuxTag record{};
    record.index = MuxListIndex_Clear;
    return Set(MKVMUX_Tag, ReferenceTo(&record));
}

HRESULT ModuleConfig::GetReservedIndex(MuxReservedIndex& index) const {
    MuxReservedIndex read{};
    VARIANT value = ReferenceTo(&read);
    const HRESULT hr = Get(MKVMUX_ReserveIndex, value);
    if (SUCCEEDED(hr)) {
        index = read;
    }
    return hr;
}

HRESULT ModuleConfig::SetReservedIndex(const MuxReservedIndex& index) const {
    return Set(MKVMUX_ReserveIndex, ReferenceTo(&index));
}

HRESULT ModuleConfig::SetLogDirectory(WideStringView directory) const {
    const win::Bstr text(directory);
    VARIANT value = Tagged(VT_BSTR);
    V_BSTR(&value) = text.Get();
    return Set(MKVMUX_LogDirectory, value);
}

HRESULT ModuleConfig::GetPosition(REFERENCE_TIME& position) const {
    VARIANT value = Tagged(VT_I8);
    const HRESULT hr = Get(MKVMUX_Position, value);
    position = SUCCEEDED(hr) ? V_I8(&value) : position;
    return hr;
}

HRESULT ModuleConfig::GetInputCount(UINT16& count) const {
    VARIANT value = Tagged(VT_UI2);
    const HRESULT hr = Get(MKVMUX_InputCount, value);
    count = SUCCEEDED(hr) ? V_UI2(&value) : count;
    return hr;
}

HRESULT ModuleConfig::GetStatistics(MuxStatistics& statistics) const {
    MuxStatistics read{};
    read.size = sizeof(read);
    VARIANT value = ReferenceTo(&read);
    const HRESULT hr = Get(MKVMUX_Statistics, value);
    statistics = SUCCEEDED(hr) ? read : statistics;
    return hr;
}

HRESULT ModuleConfig::GetInputStatistics(INT32 index, MuxInputStatistics& statistics) const {
    MuxInputStatistics read{};
    read.size = sizeof(read);
    read.index = index;
    VARIANT value = ReferenceTo(&read);
    const HRESULT hr = Get(MKVMUX_InputStatistics, value);
    statistics = SUCCEEDED(hr) ? read : statistics;
    return hr;
}

HRESULT ModuleConfig::SetNextOutput(IUnknown* output) const {
    VARIANT value = Tagged(VT_UNKNOWN);
    V_UNKNOWN(&value) = output;
    return Set(MKVMUX_NextOutput, value);
}

HRESULT ModuleConfig::SetNextOutputRule(const MuxNextOutputRule& rule) const {
    return Set(MKVMUX_NextOutputRule, ReferenceTo(&rule));
}

HRESULT ModuleConfig::IsDirty() const {
    return m_config ? m_config->IsDirty() : E_NOINTERFACE;
}

HRESULT ModuleConfig::Save(IStream* stream, bool clearDirty) const {
    return m_config ? m_config->Save(stream, clearDirty ? TRUE : FALSE) : E_NOINTERFACE;
}

HRESULT ModuleConfig::Load(IStream* stream) const {
    return m_config ? m_config->Load(stream) : E_NOINTERFACE;
}

} // namespace client
