#include "mkv/track_entry_builder.h"

#include <cstdlib>
#include <string>

#include <matroska/KaxTrackEntryData.h>

#include "mkv/cluster_rule.h"
#include "mkv/codec_mapping.h"
#include "mkv/element_values.h"
#include "mkv/writer_errors.h"
#include "records/language_lookup.h"

namespace mkv {

namespace {

// The range of the platform's rand(), on platforms with a wider one too.
constexpr unsigned kTrackUidMask = 0x7fff;

// Small, and not unique: readers of this muxer's files have always seen them so.
UINT64 RandomTrackUid() {
    return static_cast<unsigned>(std::rand()) & kTrackUidMask;
}

} // namespace

void FillTrackEntry(libmatroska::KaxTrackEntry& entry, UINT64 number, const Track& track) {
    const TrackSettings& settings = track.settings.Get();
    // Forced goes with default: the row has one switch for both.
    const UINT64 isDefault = settings.bDefault != 0 ? 1 : 0;

    entry.SetGlobalTimecodeScale(kTimecodeScaleNs);
    SetChild<libmatroska::KaxTrackNumber>(entry, number);
    SetChild<libmatroska::KaxTrackUID>(entry, RandomTrackUid());
    SetChild<libmatroska::KaxTrackType>(entry, static_cast<UINT64>(TrackTypeOf(track.type)));
    const std::string codecId = MapCodec(track.type, entry);
    if (codecId.empty()) {
        throw kUnsupportedCodecError;
    }
    SetChild<libmatroska::KaxCodecID>(entry, codecId);
    SetChild<libmatroska::KaxTrackLanguage>(entry, records::LanguageCodeOf(settings.language));
    SetChild<libmatroska::KaxTrackFlagDefault>(entry, isDefault);
    SetChild<libmatroska::KaxTrackFlagForced>(entry, isDefault);
    if (SysStringLen(settings.name) > 0) {
        SetTextChild<libmatroska::KaxTrackName>(entry, settings.name);
    }
}

} // namespace mkv
