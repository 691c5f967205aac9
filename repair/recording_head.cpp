#include "repair/recording_head.h"

#include <algorithm>

#include <ebml/EbmlHead.h>
#include <ebml/EbmlVoid.h>
#include <matroska/KaxInfo.h>
#include <matroska/KaxSeekHead.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxTracks.h>

#include "mkv/matroska_file.h"
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
bool IsPlace(const EbmlReader& reader, UINT64 position, UINT32 content) {
    BYTE first = 0;
    if (reader.Source().ReadAt(position, {&first, 1}) != 1) {
        return false;
    }
    constexpr int kFirstByteShift = 24; // of an identifier of four bytes
    const auto element = reader.ElementAt(position, reader.Source().Size());
    const bool isEmpty = element && element->id == IdOf<libebml::EbmlVoid>();
    return isEmpty ? element->end == position + mkv::kPlaceBytes : first == content >> kFirstByteShift;
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
        if (track.type == UINT64{media::kTrackTypeVideo}) {
            head.cueTrack = track.number;
        }
    });
}

} // namespace

RecordingHead ReadRecordingHead(const EbmlReader& reader) {
    const UINT64 size = reader.Source().Size();
    const auto ebmlHead = reader.ElementAt(0, size);
    if (!IsWhole(ebmlHead, IdOf<libebml::EbmlHead>())) {
        throw Refusal("it is no Matroska file");
    }
    const auto segment = reader.ElementAt(ebmlHead->end, size);
    if (!segment || segment->id != IdOf<KaxSegment>() ||
        segment->data - segment->start != kElementIdBytes + mkv::kSegmentSizeFieldBytes ||
        !IsPlace(reader, segment->data, IdOf<KaxSeekHead>()) ||
        !IsPlace(reader, segment->data + mkv::kPlaceBytes, IdOf<KaxInfo>())) {
        throw Refusal(std::string("it is no recording of this muxer, and may have no room for what is missing") +
                      kAdvice);
    }
    const auto tracks = reader.ElementAt(segment->data + 2 * mkv::kPlaceBytes, size);
    if (!IsWhole(tracks, IdOf<KaxTracks>())) {
        throw Refusal("it was cut off before its tracks were written; nothing can be saved");
    }
    RecordingHead head;
    head.segment = *segment;
    head.tracks = *tracks;
    head.hasSeekHead = IsWhole(reader.ElementAt(segment->data, size), IdOf<KaxSeekHead>());
    ReadTracks(reader, head);
    return head;
}

} // namespace repair
