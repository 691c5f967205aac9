#include "mkvmux/muxer_settings.h"

#include <algorithm>
#include <filesystem>
#include <limits>

#include <shlwapi.h>

#include "mkvmux/failure.h"
#include "mkvmux/file_checks.h"
#include "mkvmux/file_stream.h"
#include "mkvmux/temporary_name.h"
#include "mkvmux/text.h"
#include "records/track_colour.h"
#include "win/temporary_file.h"

namespace mkvmux {

namespace {

// Not the numbers that the muxer takes from the same seed.
constexpr UINT64 kSeedOfAttachments = 0x6174746163686564;

UINT64 RandomUid() {
    std::random_device source;
    return std::uniform_int_distribution<UINT64>(1)(source);
}

} // namespace

MuxerSettings::MuxerSettings(const win::ComPtr<IBaseFilter>& muxer) : m_config(muxer.Get()) {
    if (!m_config) {
        throw Failure("the installed version of the muxer takes no settings");
    }
}

std::optional<client::TrackRow> MuxerSettings::RowOf(size_t input) const {
    client::TrackRow row;
    const bool isThere = input <= static_cast<size_t>(std::numeric_limits<INT32>::max()) &&
                         SUCCEEDED(m_config.GetTrack(static_cast<INT32>(input), row));
    return isThere ? std::optional(std::move(row)) : std::nullopt;
}

void MuxerSettings::UseDocTypeWebm() {
    if (const HRESULT hr = m_config.SetDocType(MuxDocType_Webm); FAILED(hr)) {
        throw Failure("--webm: the muxer refuses the document type: " + DescribeResult(hr));
    }
}

void MuxerSettings::UseProfile(MuxProfile profile) {
    if (IsStrict() == (profile == MuxProfile_Strict)) {
        return;
    }
    if (const HRESULT hr = m_config.SetProfile(profile); FAILED(hr)) {
        throw Failure("--profile: the muxer refuses the profile: " + DescribeResult(hr));
    }
}

bool MuxerSettings::IsStrict() const {
    MuxProfile profile = MuxProfile_Compatible;
    return SUCCEEDED(m_config.GetProfile(profile)) && profile == MuxProfile_Strict;
}

bool MuxerSettings::IsWebm() const {
    MuxDocType docType = MuxDocType_Matroska;
    return SUCCEEDED(m_config.GetDocType(docType)) && docType == MuxDocType_Webm;
}

bool MuxerSettings::UseTitle(const std::wstring& title) {
    return SUCCEEDED(m_config.SetTitle(title));
}

void MuxerSettings::UseSeed(UINT64 seed) {
    m_seeded.emplace(seed ^ kSeedOfAttachments);
    if (const HRESULT hr = m_config.SetSeed(seed); FAILED(hr)) {
        throw Failure("--deterministic: the muxer refuses the seed: " + DescribeResult(hr));
    }
}

void MuxerSettings::WriteNoStatistics() {
    if (const HRESULT hr = m_config.SetTrackStatistics(false); FAILED(hr)) {
        throw Failure("--disable-track-statistics-tags: the muxer refuses it: " + DescribeResult(hr));
    }
}

void MuxerSettings::ReserveIndex(const MuxReservedIndex& index) {
    if (const HRESULT hr = m_config.SetReservedIndex(index); FAILED(hr)) {
        throw Failure("--cues: the muxer refuses the room for them: " + DescribeResult(hr));
    }
}

void MuxerSettings::LogTo(const std::wstring& directory) {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(directory, error);
    std::filesystem::create_directories(path, error);
    if (!std::filesystem::is_directory(path, error)) {
        throw Failure("--log: " + Utf8FromWide(directory) + ": is no directory and cannot be made one");
    }
    if (const HRESULT hr = m_config.SetLogDirectory(path.native()); FAILED(hr)) {
        throw Failure("--log: the muxer refuses the directory: " + DescribeResult(hr));
    }
}

bool MuxerSettings::ChangeTrack(size_t input, const TrackOptions& change) {
    std::optional<client::TrackRow> row = RowOf(input);
    if (row) {
        change.ApplyTo(*row);
    }
    return row && SUCCEEDED(m_config.SetTrack(*row));
}

bool MuxerSettings::ChangeFlags(size_t input, const TrackFlagOptions& change) {
    MuxTrackFlags flags{};
    if (input > static_cast<size_t>(std::numeric_limits<INT32>::max()) ||
        FAILED(m_config.GetFlags(static_cast<INT32>(input), flags))) {
        return false;
    }
    change.ApplyTo(flags);
    return SUCCEEDED(m_config.SetFlags(flags));
}

void MuxerSettings::TellColour(size_t input, const media::Colour& colour, const std::vector<BYTE>& dolbyVision) {
    MuxTrackColour record = records::UntoldColour(static_cast<INT32>(input));
    for (size_t i = 0; i < records::kColourNumbers.size(); ++i) {
        if (colour.numbers[i]) {
            record.*records::kColourNumbers[i] = static_cast<INT32>(*colour.numbers[i]);
        }
    }
    for (size_t i = 0; i < records::kColourMastering.size(); ++i) {
        if (colour.mastering[i]) {
            record.*records::kColourMastering[i] = *colour.mastering[i];
        }
    }
    if (dolbyVision.size() == sizeof(record.dolbyVision)) {
        std::ranges::copy(dolbyVision, record.dolbyVision);
    }
    (void)m_config.SetColour(record);
}

std::optional<std::wstring> MuxerSettings::LanguageOf(size_t input) const {
    const std::optional<client::TrackRow> row = RowOf(input);
    if (!row) {
        return {};
    }
    return row->language.Get() == nullptr ? std::wstring() : std::wstring(row->language.Get());
}

bool MuxerSettings::IsEnabled(size_t input) const {
    const std::optional<client::TrackRow> row = RowOf(input);
    return !row || row->enabled != 0;
}

UINT64 MuxerSettings::UniqueUid(UINT64 wanted) {
    UINT64 uid = wanted;
    while (uid == 0 || !m_uids.insert(uid).second) {
        uid = m_seeded ? (*m_seeded)() : RandomUid();
    }
    return uid;
}

void MuxerSettings::Attach(client::Attachment attachment) {
    attachment.uid = UniqueUid(attachment.uid);
    if (const HRESULT hr = m_config.Attach(attachment); FAILED(hr)) {
        throw Failure(Shown(attachment.fileName.value_or(std::wstring())) +
                      ": the muxer refuses the attachment: " + DescribeResult(hr));
    }
}

bool MuxerSettings::AddChapter(const client::Chapter& chapter) {
    return SUCCEEDED(m_config.AddChapter(chapter));
}

bool MuxerSettings::AddTag(const client::Tag& tag) {
    return SUCCEEDED(m_config.AddTag(tag));
}

void MuxerSettings::ClearChapters() {
    if (const HRESULT hr = m_config.ClearChapters(); FAILED(hr)) {
        throw Failure("--chapters: the muxer takes none: " + DescribeResult(hr));
    }
}

void MuxerSettings::ClearTags() {
    if (const HRESULT hr = m_config.ClearTags(); FAILED(hr)) {
        throw Failure("--global-tags: the muxer takes none: " + DescribeResult(hr));
    }
}

HRESULT MuxerSettings::Write(win::FileHandle file, const std::wstring& path) const {
    const win::ComPtr<CFileStream> stream(new CFileStream(nullptr));
    stream->Take(std::move(file), path);
    const HRESULT hr = OleSaveToStream(m_config.Interface(), stream.Get());
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
    if (const HRESULT hr = m_config.Load(stream.Get()); FAILED(hr)) {
        throw Failure(Utf8FromWide(path) + ": the configuration cannot be loaded: " + DescribeResult(hr));
    }
}

} // namespace mkvmux
