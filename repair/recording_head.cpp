#include "repair/recording_head.h"

#include <algorithm>

#include <ebml/EbmlHead.h>
#include <ebml/EbmlVoid.h>
#include <matroska/KaxInfo.h>
#include <matroska/KaxSeekHead.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxTracks.h>

#include "mkv/compatible_info.h"
#include "mkv/file_form.h"
#include "mkv/file_origin.h"
#include "mkv/strict_info.h"
#include "repair/refusal.h"
#include "sources/base/limits.h"
#include "sources/matroska/track_entry_reader.h"

namespace repair {

namespace {

using namespace libmatroska;
using matroska::EbmlReader;
using matroska::Element;
using matroska::IdOf;

constexpr UINT64 kElementIdBytes = 4;
// Far more than the muxer has settings for.
constexpr size_t kMaxTracks = 1000;

bool IsWhole(const std::optional<Element>& element, UINT32 id) {
    return element && element->id == id && element->whole && !element->unknownSize;
}

// Empty, or filled by a finalisation that did not come to its end, perhaps with no more than the first byte.
bool IsPlace(const EbmlReader& reader, UINT64 position, UINT64 size, UINT32 content) {
    BYTE first = 0;
    if (reader.Source().ReadAt(position, {&first, 1}) != 1) {
        return false;
    }
    constexpr int kFirstByteShift = 24; // of an identifier of four bytes
    const auto element = reader.ElementAt(position, reader.Source().Size());
    const bool isEmpty = element && element->id == IdOf<libebml::EbmlVoid>();
    return isEmpty ? element->end == position + size : first == content >> kFirstByteShift;
}

// The version that follows may be another one.
bool IsOurName(const EbmlReader& reader, const Element& writingApp) {
    constexpr std::string_view kName(mkv::kWritingAppPrefix,
                                     std::char_traits<char>::length(mkv::kWritingAppPrefix) - 1);
    Element start = writingApp;
    start.end = std::min(start.end, start.data + kName.size());
    return reader.ReadString(start) == kName;
}

void ReadTracks(const EbmlReader& reader, RecordingHead& head) {
    UINT64 privateRoom = source::kMaxPrivateBytes;
    (void)reader.ForEachChild(head.tracks, [&](const Element& child) {
        if (child.id != IdOf<KaxTrackEntry>() || head.trackOf.size() >= kMaxTracks) {
            return;
        }
        const matroska::Track track = matroska::ReadTrackEntry(reader, child, privateRoom);
        privateRoom -= std::min<UINT64>(privateRoom, track.codecPrivate.size());
        head.trackOf[track.number] = {track.type, track.defaultDurationNs};
    });
}

// The last video track wins.
UINT64 CompatibleCueTrack(const RecordingHead& head) {
    UINT64 cueTrack = 0;
    for (const auto& [number, track] : head.trackOf) {
        if (track.type == UINT64{media::kTrackTypeVideo}) {
            cueTrack = number;
        }
    }
    return cueTrack;
}

// The first video track, else the first with sound.
UINT64 StrictCueTrack(const RecordingHead& head) {
    for (const INT32 type : {media::kTrackTypeVideo, media::kTrackTypeAudio}) {
        for (const auto& [number, track] : head.trackOf) {
            if (track.type == static_cast<UINT64>(type)) {
                return number;
            }
        }
    }
    return 0;
}

// The profile whose files have such a Segment.
std::optional<MuxProfile> ProfileOf(const Element& segment) {
    for (const MuxProfile profile : {MuxProfile_Compatible, MuxProfile_Strict}) {
        const auto fieldBytes = static_cast<UINT64>(mkv::FormOf(profile).segmentSizeFieldBytes);
        if (segment.id == IdOf<KaxSegment>() && segment.data - segment.start == kElementIdBytes + fieldBytes) {
            return profile;
        }
    }
    return std::nullopt;
}

// Where the tracks begin when this is such an Info: ours, with the room for the duration at its end.
std::optional<UINT64> EndOfStrictInfo(const EbmlReader& reader, UINT64 position) {
    const auto info = reader.ElementAt(position, reader.Source().Size());
    if (!IsWhole(info, IdOf<KaxInfo>()) || info->Size() < mkv::CStrictInfo::kDurationBytes) {
        return std::nullopt;
    }
    Element named = *info; // without that room, of which a finalisation may have written a part
    named.end -= mkv::CStrictInfo::kDurationBytes;
    bool isOurs = false;
    const bool isIntact = reader.ForEachChild(named, [&](const Element& child) {
        isOurs = isOurs || (child.id == IdOf<KaxWritingApp>() && IsOurName(reader, child));
    });
    return isIntact && isOurs ? std::optional(info->end) : std::nullopt;
}

std::optional<UINT64> TracksPosition(const EbmlReader& reader, const Element& segment, MuxProfile profile) {
    const UINT64 placeBytes = mkv::FormOf(profile).seekHeadPlaceBytes;
    if (!IsPlace(reader, segment.data, placeBytes, IdOf<KaxSeekHead>())) {
        return std::nullopt;
    }
    const UINT64 info = segment.data + placeBytes;
    if (profile == MuxProfile_Strict) {
        return EndOfStrictInfo(reader, info);
    }
    constexpr UINT64 kInfoPlaceBytes = mkv::CCompatibleInfo::kPlaceBytes;
    return IsPlace(reader, info, kInfoPlaceBytes, IdOf<KaxInfo>()) ? std::optional(info + kInfoPlaceBytes)
                                                                   : std::nullopt;
}

} // namespace

RecordingHead ReadRecordingHead(const EbmlReader& reader) {
    const UINT64 size = reader.Source().Size();
    const auto ebmlHead = reader.ElementAt(0, size);
    if (!IsWhole(ebmlHead, IdOf<libebml::EbmlHead>())) {
        throw Refusal("it is no Matroska file");
    }
    const auto segment = reader.ElementAt(ebmlHead->end, size);
    const auto profile = segment ? ProfileOf(*segment) : std::nullopt;
    const auto tracksPosition = profile ? TracksPosition(reader, *segment, *profile) : std::nullopt;
    if (!tracksPosition) {
        throw Refusal(std::string("it is no recording of this muxer, and may have no room for what is missing") +
                      kAdvice);
    }
    const auto tracks = reader.ElementAt(*tracksPosition, size);
    if (!IsWhole(tracks, IdOf<KaxTracks>())) {
        throw Refusal("it was cut off before its tracks were written; nothing can be saved");
    }
    RecordingHead head;
    head.profile = *profile;
    head.segment = *segment;
    head.tracks = *tracks;
    head.hasSeekHead = IsWhole(reader.ElementAt(segment->data, size), IdOf<KaxSeekHead>());
    ReadTracks(reader, head);
    head.cueTrack = head.profile == MuxProfile_Strict ? StrictCueTrack(head) : CompatibleCueTrack(head);
    return head;
}

} // namespace repair
