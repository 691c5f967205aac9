#include "mkv/strict_track_entry.h"

#include <matroska/KaxTrackEntryData.h>

#include "media/codec_description.h"
#include "mkv/cluster_rule.h"
#include "mkv/codec_mapping.h"
#include "mkv/element_values.h"
#include "mkv/strict_codec_mapping.h"
#include "mkv/writer_errors.h"
#include "records/language_codes.h"

namespace mkv {

namespace {

using libmatroska::KaxTrackEntry;

// Unset is not off: readers then know that nobody has said.
template <typename Flag>
void SetFlagThatIsSet(KaxTrackEntry& entry, BYTE flag) {
    if (flag != MuxFlag_Unset) {
        SetChild<Flag>(entry, UINT64{flag});
    }
}

void FillFlags(KaxTrackEntry& entry, const Track& track) {
    SetToldChild<libmatroska::KaxTrackFlagEnabled>(entry, UINT64{1});
    SetToldChild<libmatroska::KaxTrackFlagDefault>(entry, UINT64{track.settings.Get().bDefault != 0});
    SetToldChild<libmatroska::KaxTrackFlagForced>(entry, UINT64{track.flags.forced == MuxFlag_On});
    SetChild<libmatroska::KaxTrackFlagLacing>(entry, UINT64{0}); // a block holds one frame
}

// WebM has none of these.
void FillMatroskaOnly(KaxTrackEntry& entry, const MuxTrackFlags& flags, const std::string& languageTag) {
    SetChild<libmatroska::KaxLanguageIETF>(entry, languageTag);
    SetFlagThatIsSet<libmatroska::KaxFlagHearingImpaired>(entry, flags.hearingImpaired);
    SetFlagThatIsSet<libmatroska::KaxFlagVisualImpaired>(entry, flags.visualImpaired);
    SetFlagThatIsSet<libmatroska::KaxFlagOriginal>(entry, flags.original);
    SetFlagThatIsSet<libmatroska::KaxFlagCommentary>(entry, flags.commentary);
}

} // namespace

void FillStrictTrackEntry(KaxTrackEntry& entry, UINT64 number, const Track& track, CIdentifiers& identifiers,
                          bool isWebm) {
    const TrackSettings& settings = track.settings.Get();
    const auto trackType = static_cast<UINT64>(TrackTypeOf(track.type));
    const media::CodecDescription description = media::DescribeStrictCodec(track.type);
    if (description.codecId.empty()) {
        throw kUnsupportedCodecError;
    }
    const records::LanguageCodes language = records::LanguageCodesOf(settings.language);

    entry.SetGlobalTimecodeScale(kTimecodeScaleNs);
    SetChild<libmatroska::KaxTrackNumber>(entry, number);
    SetChild<libmatroska::KaxTrackUID>(entry, identifiers.next());
    SetChild<libmatroska::KaxTrackType>(entry, trackType);
    FillFlags(entry, track);
    SetToldChild<libmatroska::KaxTrackLanguage>(entry, language.bibliographic);
    if (!isWebm) {
        FillMatroskaOnly(entry, track.flags, language.tag);
    }
    if (SysStringLen(settings.name) > 0) {
        SetTextChild<libmatroska::KaxTrackName>(entry, settings.name);
    }
    FillStrictCodec(entry, description, isWebm);
}

} // namespace mkv
