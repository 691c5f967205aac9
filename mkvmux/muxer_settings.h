// MuxerSettings: steers the muxer through its parameter interface and its persisted configuration.
//
// Owner: holds the interface; the muxer's module must outlive it. Threads: one. Errors: Failure.
#pragma once

#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "client/module_config.h"
#include "media/colour.h"
#include "mkvmux/track_options.h"
#include "win/com_ptr.h"
#include "win/handle.h"
#include "win/platform.h"

namespace mkvmux {

class MuxerSettings {
  public:
    explicit MuxerSettings(const win::ComPtr<IBaseFilter>& muxer);

    void UseDocTypeWebm();
    void UseProfile(MuxProfile profile);
    // A muxer of older days knows no profile and writes compatible files.
    [[nodiscard]] bool IsStrict() const;
    [[nodiscard]] bool IsWebm() const;
    // False for one that the muxer refuses, such as one that is too long.
    [[nodiscard]] bool UseTitle(const std::wstring& title);
    // For the muxer's identifiers and for those that are made here.
    void UseSeed(UINT64 seed);
    void WriteNoStatistics();
    void ReserveIndex(const MuxReservedIndex& index);
    // The directory is created where it is missing.
    void LogTo(const std::wstring& directory);
    // False when the muxer has no settings row for that input, in which case nothing is changed.
    [[nodiscard]] bool ChangeTrack(size_t input, const TrackOptions& change);
    // As above.
    [[nodiscard]] bool ChangeFlags(size_t input, const TrackFlagOptions& change);
    // What a file says of a track's colours. A muxer of older days refuses it, and finds in the stream what is there.
    void TellColour(size_t input, const media::Colour& colour, const std::vector<BYTE>& dolbyVision);
    // As the muxer is told it; nothing for an input without a row.
    [[nodiscard]] std::optional<std::wstring> LanguageOf(size_t input) const;
    // An input without a row is written.
    [[nodiscard]] bool IsEnabled(size_t input) const;
    // A unique identifier of 0, or one that another attachment has already, is replaced by a new one.
    void Attach(client::Attachment attachment);
    // One more; false for one that the muxer refuses.
    [[nodiscard]] bool AddChapter(const client::Chapter& chapter);
    [[nodiscard]] bool AddTag(const client::Tag& tag);
    void ClearChapters();
    void ClearTags();
    [[nodiscard]] bool HasAttached() const { return !m_uids.empty(); }

    // What LogTo writes in its directory.
    static constexpr const wchar_t* kLogFileName = L"QRX_MKVMuxer.log";

    // The file holds the class identifier and what IPersistStream writes, as OleSaveToStream puts them down. It is
    // replaced at once and whole, or not at all; until then the bytes stand beside it under a name of their own.
    void SaveTo(const std::wstring& path, bool overwrite) const;
    void LoadFrom(const std::wstring& path);

  private:
    [[nodiscard]] HRESULT Write(win::FileHandle file, const std::wstring& path) const;
    // None for an input without a row.
    [[nodiscard]] std::optional<client::TrackRow> RowOf(size_t input) const;
    // Two inputs can carry the same attachment.
    [[nodiscard]] UINT64 UniqueUid(UINT64 wanted);

    client::ModuleConfig m_config;
    std::set<UINT64> m_uids;                 // of the attachments so far
    std::optional<std::mt19937_64> m_seeded; // none: the system's random numbers
};

} // namespace mkvmux
