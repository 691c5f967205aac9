// ModuleConfig: the parameters of a muxer filter, without VARIANTs and without strings that must be freed.
//
// Owner: holds a reference on the interface, or none; what it is given stays its holder's, the filter has copies.
// Threads: as the interface, which may be called from any.
// Errors: what the filter answers, E_NOINTERFACE without a filter, std::bad_alloc. A getter that fails changes nothing.
#pragma once

#include <qrx_mkvmuxer.h>

#include "client/attachment.h"
#include "client/chapter.h"
#include "client/tag.h"
#include "client/track_row.h"
#include "win/com_ptr.h"
#include "win/platform.h"
#include "win/wide_string.h"

namespace client {

class ModuleConfig {
  public:
    ModuleConfig() = default;
    // Of that object, or none when it has no parameters.
    explicit ModuleConfig(IUnknown* object) { (void)Connect(object); }

    // In place of the one held before; what the object answers when it is asked for the interface.
    HRESULT Connect(IUnknown* object);
    void Reset() { m_config.Reset(); }
    explicit operator bool() const { return static_cast<bool>(m_config); }
    // For functions of the system; null without a filter.
    [[nodiscard]] IModuleConfig* Interface() const { return m_config.Get(); }

    // The row gets the index that it was asked for by, whatever a loaded configuration has stored in it.
    [[nodiscard]] HRESULT GetTrack(INT32 index, TrackRow& row) const;
    [[nodiscard]] HRESULT SetTrack(const TrackRow& row) const;
    [[nodiscard]] HRESULT Attach(const Attachment& attachment) const;
    // Of any key whose value is one UINT32.
    [[nodiscard]] HRESULT GetNumber(const GUID& key, UINT32& number) const;
    [[nodiscard]] HRESULT SetNumber(const GUID& key, UINT32 number) const;
    // What is not WebM counts as Matroska.
    [[nodiscard]] HRESULT GetDocType(MuxDocType& docType) const;
    [[nodiscard]] HRESULT SetDocType(MuxDocType docType) const;
    [[nodiscard]] HRESULT GetProfile(MuxProfile& profile) const;
    [[nodiscard]] HRESULT SetProfile(MuxProfile profile) const;
    // Those of that input; the record that is set names its own.
    [[nodiscard]] HRESULT GetFlags(INT32 index, MuxTrackFlags& flags) const;
    [[nodiscard]] HRESULT SetFlags(const MuxTrackFlags& flags) const;
    // What is told of an input's colours; the record names it.
    [[nodiscard]] HRESULT GetColour(MuxTrackColour& colour) const;
    [[nodiscard]] HRESULT SetColour(const MuxTrackColour& colour) const;
    // Of the file; empty for none.
    [[nodiscard]] HRESULT GetTitle(WideString& title) const;
    [[nodiscard]] HRESULT SetTitle(WideStringView title) const;
    // 0: none.
    [[nodiscard]] HRESULT GetSeed(UINT64& seed) const;
    [[nodiscard]] HRESULT SetSeed(UINT64 seed) const;
    [[nodiscard]] HRESULT GetTrackStatistics(bool& isWritten) const;
    [[nodiscard]] HRESULT SetTrackStatistics(bool isWritten) const;
    // One more chapter; MarkChapter: where the file that is being recorded is now. Get: E_INVALIDARG behind the last.
    [[nodiscard]] HRESULT AddChapter(const Chapter& chapter) const;
    [[nodiscard]] HRESULT MarkChapter(WideStringView title, WideStringView language) const;
    [[nodiscard]] HRESULT GetChapter(INT32 index, Chapter& chapter) const;
    [[nodiscard]] HRESULT ClearChapters() const;
    [[nodiscard]] HRESULT AddTag(const Tag& tag) const;
    [[nodiscard]] HRESULT GetTag(INT32 index, Tag& tag) const;
    [[nodiscard]] HRESULT ClearTags() const;
    [[nodiscard]] HRESULT GetReservedIndex(MuxReservedIndex& index) const;
    [[nodiscard]] HRESULT SetReservedIndex(const MuxReservedIndex& index) const;
    // An empty one switches the log off.
    [[nodiscard]] HRESULT SetLogDirectory(WideStringView directory) const;
    // The length written so far.
    [[nodiscard]] HRESULT GetPosition(REFERENCE_TIME& position) const;
    // The number of inputs without the spare one.
    [[nodiscard]] HRESULT GetInputCount(UINT16& count) const;

    // What is going on; in full only from a muxer that is not older than this header.
    [[nodiscard]] HRESULT GetStatistics(MuxStatistics& statistics) const;
    [[nodiscard]] HRESULT GetInputStatistics(INT32 index, MuxInputStatistics& statistics) const;

    // Where and when the file that is being recorded is gone on from; null for nothing.
    [[nodiscard]] HRESULT SetNextOutput(IUnknown* output) const;
    [[nodiscard]] HRESULT SetNextOutputRule(const MuxNextOutputRule& rule) const;

    // S_FALSE when nothing has changed since the last save that cleared it.
    [[nodiscard]] HRESULT IsDirty() const;
    [[nodiscard]] HRESULT Save(IStream* stream, bool clearDirty) const;
    [[nodiscard]] HRESULT Load(IStream* stream) const;

  private:
    [[nodiscard]] HRESULT Set(const GUID& key, const VARIANT& value) const;
    [[nodiscard]] HRESULT Get(const GUID& key, VARIANT& value) const;

    win::ComPtr<IModuleConfig> m_config;
};

} // namespace client
