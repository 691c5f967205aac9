#include "mkvmux/muxer_settings.h"

#include <filesystem>
#include <limits>
#include <random>

#include <shlwapi.h>

#include "mkvmux/failure.h"
#include "mkvmux/file_checks.h"
#include "mkvmux/file_stream.h"
#include "mkvmux/text.h"
#include "win/bstr.h"
#include "win/temporary_file.h"

namespace mkvmux {

namespace {

constexpr ULONG kDocTypeWebm = 1;

// A record whose strings are freed with it.
struct OwnedRow : TrackSettings {
    OwnedRow() : TrackSettings{} {}
    ~OwnedRow() {
        SysFreeString(language);
        SysFreeString(name);
    }
    OwnedRow(const OwnedRow&) = delete;
    OwnedRow& operator=(const OwnedRow&) = delete;
};

void Replace(BSTR& text, const std::wstring& by) {
    SysFreeString(text);
    text = win::Bstr(by).Detach();
}

VARIANT ReferenceTo(void* record) {
    VARIANT value{};
    V_VT(&value) = VT_BYREF;
    V_BYREF(&value) = record;
    return value;
}

UINT64 RandomUid() {
    std::random_device source;
    return std::uniform_int_distribution<UINT64>(1)(source);
}

std::wstring NewTemporaryName() {
    return win::TemporaryFile::RandomName(L"mkvmux");
}

} // namespace

MuxerSettings::MuxerSettings(const win::ComPtr<IBaseFilter>& muxer)
    : m_config(muxer.Query<IModuleConfig>(IID_IModuleConfig)) {
    if (!m_config) {
        throw Failure("the installed version of the muxer takes no settings");
    }
}

HRESULT MuxerSettings::Set(const GUID& key, const VARIANT& value) const {
    return m_config->SetValue(&key, &value);
}

HRESULT MuxerSettings::GetRow(size_t input, TrackSettings& row) const {
    if (input > static_cast<size_t>(std::numeric_limits<INT32>::max())) {
        return E_INVALIDARG;
    }
    row.index = static_cast<INT32>(input);
    VARIANT value = ReferenceTo(&row);
    return m_config->GetValue(&MKVMUX_TrackInfo, &value);
}

void MuxerSettings::UseDocTypeWebm() {
    VARIANT value{};
    V_VT(&value) = VT_UI4;
    V_UI4(&value) = kDocTypeWebm;
    if (const HRESULT hr = Set(MKVMUX_DocType, value); FAILED(hr)) {
        throw Failure("--webm: the muxer refuses the document type: " + DescribeResult(hr));
    }
}

void MuxerSettings::LogTo(const std::wstring& directory) {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(directory, error);
    std::filesystem::create_directories(path, error);
    if (!std::filesystem::is_directory(path, error)) {
        throw Failure("--log: " + Utf8FromWide(directory) + ": is no directory and cannot be made one");
    }
    const win::Bstr text(path.native());
    VARIANT value{};
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = text.Get();
    if (const HRESULT hr = Set(MKVMUX_LogDirectory, value); FAILED(hr)) {
        throw Failure("--log: the muxer refuses the directory: " + DescribeResult(hr));
    }
}

bool MuxerSettings::ChangeTrack(size_t input, const TrackOptions& change) {
    OwnedRow row;
    if (FAILED(GetRow(input, row))) {
        return false;
    }
    if (change.name) {
        Replace(row.name, *change.name);
    }
    if (change.language) {
        Replace(row.language, *change.language);
    }
    row.index = static_cast<INT32>(input); // a loaded configuration may have brought another one
    row.bDefault = change.makeDefault ? 1 : row.bDefault;
    row.bEnabled = change.disable ? 0 : row.bEnabled;
    return SUCCEEDED(Set(MKVMUX_TrackInfo, ReferenceTo(&row)));
}

std::optional<std::wstring> MuxerSettings::LanguageOf(size_t input) const {
    OwnedRow row;
    if (FAILED(GetRow(input, row))) {
        return {};
    }
    return row.language == nullptr ? std::wstring() : std::wstring(row.language);
}

bool MuxerSettings::IsEnabled(size_t input) const {
    OwnedRow row;
    return FAILED(GetRow(input, row)) || row.bEnabled != 0;
}

UINT64 MuxerSettings::UniqueUid(UINT64 wanted) {
    UINT64 uid = wanted;
    while (uid == 0 || !m_uids.insert(uid).second) {
        uid = RandomUid();
    }
    return uid;
}

void MuxerSettings::Attach(Attachment attachment) {
    const win::Bstr name(attachment.name);
    const win::Bstr description(attachment.description);
    MuxAttachment record{}; // what is null is left out of the file
    record.fileName = attachment.name.empty() ? nullptr : name.Get();
    record.description = attachment.description.empty() ? nullptr : description.Get();
    record.mimeType = attachment.mimeType.empty() ? nullptr : attachment.mimeType.data();
    record.dataSize = static_cast<UINT32>(attachment.bytes.size());
    record.data = reinterpret_cast<BYTE*>(attachment.bytes.data());
    record.uid = UniqueUid(attachment.uid);
    if (const HRESULT hr = Set(MKVMUX_Attachment, ReferenceTo(&record)); FAILED(hr)) {
        throw Failure(Shown(attachment.name) + ": the muxer refuses the attachment: " + DescribeResult(hr));
    }
}

HRESULT MuxerSettings::Write(win::FileHandle file, const std::wstring& path) const {
    const win::ComPtr<CFileStream> stream(new CFileStream(nullptr));
    stream->Take(std::move(file), path);
    const HRESULT hr = OleSaveToStream(m_config.Get(), stream.Get());
    return FAILED(hr) ? hr : stream->Commit(STGC_DEFAULT);
}

void MuxerSettings::SaveTo(const std::wstring& path, bool overwrite) const {
    win::TemporaryFile unfinished(NewTemporaryName);
    if (!unfinished.Create(win::FolderOf(path), GENERIC_READ | GENERIC_WRITE, FILE_ATTRIBUTE_NORMAL)) {
        const HRESULT hr = LastResult();
        throw Failure(Utf8FromWide(path) + ": cannot be created: " + DescribeFileError(path, hr));
    }
    HRESULT hr = Write(unfinished.Take(), path);
    if (SUCCEEDED(hr) && !(overwrite ? unfinished.MoveTo(path) : unfinished.MoveToFreePath(path))) {
        hr = LastResult();
    }
    if (FAILED(hr)) {
        throw Failure(Utf8FromWide(path) + ": the configuration cannot be saved: " + DescribeResult(hr));
    }
}

void MuxerSettings::LoadFrom(const std::wstring& path) {
    win::ComPtr<IStream> stream;
    const HRESULT opened = SHCreateStreamOnFileEx(path.c_str(), STGM_READ | STGM_SHARE_DENY_WRITE,
                                                  FILE_ATTRIBUTE_NORMAL, FALSE, nullptr, stream.Put());
    if (FAILED(opened)) {
        throw Failure(Utf8FromWide(path) + ": cannot be opened: " + DescribeFileError(path, opened));
    }
    CLSID owner{};
    if (ReadClassStm(stream.Get(), &owner) != S_OK || owner != CLSID_MatroskaMuxer) {
        throw Failure(Utf8FromWide(path) + ": is no saved configuration of the muxer");
    }
    if (const HRESULT hr = m_config->Load(stream.Get()); FAILED(hr)) {
        throw Failure(Utf8FromWide(path) + ": the configuration cannot be loaded: " + DescribeResult(hr));
    }
}

} // namespace mkvmux
