#include "sources/matroska/media_types_of.h"

#include "dshow/media_subtypes.h"
#include "media/format_builder.h"

namespace matroska {

namespace {

struct SubtitleRow {
    const char* codecId;
    GUID subtype;
};

// PGS has a format type alone.
const SubtitleRow kSubtitleRows[] = {
    {"S_TEXT/UTF8", mediasubtype::kUtf8}, {"S_TEXT/SSA", mediasubtype::kSsa},  {"S_TEXT/ASS", mediasubtype::kAss},
    {"S_TEXT/USF", mediasubtype::kUsf},   {"S_VOBSUB", mediasubtype::kVobSub}, {"S_HDMV/PGS", GUID_NULL},
};

} // namespace

std::vector<CMediaType> SubtitleTypesOf(const Track& track) {
    if (track.codecId == "S_TEXT/ASCII") {
        return {media::TypeWithFormat(MEDIATYPE_Text, GUID_NULL, FORMAT_None, {})};
    }
    for (const SubtitleRow& row : kSubtitleRows) {
        if (track.codecId == row.codecId) {
            return {media::SubtitleType(row.subtype, track.language.c_str(), track.codecPrivate)};
        }
    }
    return {};
}

std::vector<CMediaType> MediaTypesOf(const Track& track) {
    if (track.Is(TrackType::Video)) {
        return VideoTypesOf(track);
    }
    if (track.Is(TrackType::Audio)) {
        return AudioTypesOf(track);
    }
    return track.Is(TrackType::Subtitle) ? SubtitleTypesOf(track) : std::vector<CMediaType>();
}

} // namespace matroska
