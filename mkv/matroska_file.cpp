#include "mkv/matroska_file.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <new>
#include <string>
#include <utility>

#include <ebml/EbmlHead.h>
#include <ebml/EbmlSubHead.h>
#include <matroska/KaxAttachments.h>
#include <matroska/KaxCues.h>
#include <matroska/KaxTags.h>

#include "media/track_type.h"
#include "mkv/attachments_element.h"
#include "mkv/cluster_rule.h"
#include "mkv/codec_mapping.h"
#include "mkv/element_values.h"
#include "mkv/statistics_tags.h"
#include "mkv/strict_attachments.h"
#include "mkv/strict_track_entry.h"
#include "mkv/track_entry_builder.h"

namespace mkv {

namespace {

constexpr const char* kMatroskaDocType = "matroska";
constexpr const char* kWebMDocType = "webm";

// All ones behind the mark of the field's length.
std::vector<BYTE> UnknownSize(int fieldBytes) {
    std::vector<BYTE> size(static_cast<size_t>(fieldBytes), BYTE{0xff});
    size[0] = static_cast<BYTE>(size[0] >> (fieldBytes - 1));
    return size;
}

} // namespace

CMatroskaFile::CMatroskaFile(CFileOutput& io, const records::FileOptions& options)
    : m_options(options), m_form(FormOf(options.profile)), m_origin(OriginNow(options.seed)),
      m_identifiers(options.seed), m_io(io), m_gathering(io), m_patcher(m_gathering),
      m_seekHead(m_gathering, m_segment), m_annotations(m_gathering, m_patcher, m_seekHead, m_identifiers),
      m_info(CSegmentInfo::of(m_options, m_origin, m_gathering, m_identifiers)), m_reservedIndex(m_gathering),
      m_clusters(MakeClusters(options.isStrict(), m_gathering, m_segment, m_cues)) {
    m_cues.SetGlobalTimecodeScale(kTimecodeScaleNs);
}

void CMatroskaFile::writeHead(DocType docType) {
    m_isWebm = docType == DocType::webm;
    m_isLive = !m_gathering.begin();
    libebml::EbmlHead head;
    SetChild<libebml::EDocType>(head, std::string(m_isWebm ? kWebMDocType : kMatroskaDocType));
    SetChild<libebml::EDocTypeVersion>(head, m_form.docTypeVersion);
    SetChild<libebml::EDocTypeReadVersion>(head, m_form.docTypeReadVersion);
    head.Render(m_gathering, true);
    writeSegmentHead();
    if (m_isLive) {
        writeLiveInfo();
    } else {
        writePlacesAndInfo();
    }
    m_patcher.flushHeadPart();
}

// A recording may go on for days: what nobody will write is not kept.
void CMatroskaFile::writeLiveInfo() {
    m_info->openLive(m_isWebm, m_seekHead);
    m_clusters->writeLive();
    m_cues.keepNone();
}

void CMatroskaFile::writePlacesAndInfo() {
    m_seekHead.writePlace(m_form.seekHeadPlaceBytes);
    m_info->open(m_isWebm, m_seekHead);
}

// The library writes a known size of 0, with which readers see a recording that was cut off as an empty file.
void CMatroskaFile::writeSegmentHead() {
    m_segment.WriteHead(m_gathering, m_form.segmentSizeFieldBytes);
    m_gathering.overwriteTail(UnknownSize(m_form.segmentSizeFieldBytes));
    m_dataStart = m_gathering.getFilePointer();
}

void CMatroskaFile::fillTrackEntry(libmatroska::KaxTrackEntry& entry, UINT64 number, const Track& track) {
    if (m_options.isStrict()) {
        FillStrictTrackEntry(entry, number, track, m_identifiers, m_isWebm);
        const auto stream = static_cast<UINT32>(number - 1);
        if (!m_isLive) {
            m_latePrivateData.reserve(entry, stream, track.type);
        }
        m_colours.add(entry, stream, track, m_isWebm, m_isLive);
    } else {
        FillTrackEntry(entry, number, track);
    }
}

void CMatroskaFile::writeTracks(const TrackList& tracks) {
    std::srand(static_cast<unsigned>(std::time(nullptr))); // for the track UIDs
    auto& element = libebml::GetChild<libmatroska::KaxTracks>(m_segment);
    std::vector<libmatroska::KaxTrackEntry*> entries;
    INT32 cueTrack = kNoCueTrack;
    for (const Track& track : tracks) {
        auto& entry = entries.empty() ? libebml::GetChild<libmatroska::KaxTrackEntry>(element)
                                      : libebml::GetNextChild(element, *entries.back());
        entries.push_back(&entry);
        fillTrackEntry(entry, entries.size(), track);
        m_trackUids[track.flags.index] = libebml::GetChild<libmatroska::KaxTrackUID>(entry).GetValue();
        if (TrackTypeOf(track.type) == media::kTrackTypeVideo) {
            cueTrack = static_cast<INT32>(entries.size()) - 1; // the last video track wins
        }
    }
    const UINT64 size = element.Render(m_gathering, false);
    m_patcher.flushHeadPart();
    if (size > 0) { // without tracks there is no element either
        m_seekHead.list(element);
    }
    m_clusters->setTracks(tracks, entries, cueTrack);
    m_clusters->onFirstKeyframes(
        [this](UINT32 stream, std::span<const BYTE> frame) { keepFirstKeyframe(stream, frame); });
    m_indexBytes = m_isLive ? 0 : CReservedIndex::bytesFor(m_options, tracks);
    observeBlocks(entries);
}

// What the media type did not tell.
void CMatroskaFile::keepFirstKeyframe(UINT32 stream, std::span<const BYTE> frame) {
    m_latePrivateData.fill(stream, frame, m_patcher);
    m_colours.fill(stream, frame, m_patcher);
}

void CMatroskaFile::writeAttachments(const std::vector<const MuxAttachment*>& records) {
    if (m_options.isStrict()) {
        const CStrictAttachments strict(records, m_identifiers);
        writeAttachmentsElement(strict.all());
    } else {
        writeAttachmentsElement(records);
    }
}

void CMatroskaFile::writeAttachmentsElement(const std::vector<const MuxAttachment*>& records) {
    if (!records.empty()) {
        CAttachmentsElement element(records);
        writeElement(element);
    }
}

// Forced, since the library otherwise insists on mandatory children that were left out on purpose.
void CMatroskaFile::writeElement(libebml::EbmlMaster& element) {
    const CGatheringIO::Place place = m_gathering.place();
    element.Render(m_gathering, false, false, true);
    m_gathering.flush();
    if (m_gathering.takeLost()) {
        m_gathering.returnTo(place); // what comes next takes its place
        return;
    }
    m_seekHead.list(element);
}

void CMatroskaFile::writeAnnotations(Annotations annotations) {
    if (m_options.isStrict()) {
        m_annotations.write(std::move(annotations), m_trackUids, m_isWebm);
    }
}

void CMatroskaFile::changeAnnotations(Annotations annotations) {
    if (m_options.isStrict()) {
        m_annotations.change(std::move(annotations));
    }
}

void CMatroskaFile::startFirstCluster() {
    m_reservedIndex.write(m_indexBytes);
    m_clusters->startCluster(0);
}

// What was written then is rendered once more and forgotten.
void CMatroskaFile::resume(const CutRecording& recording) {
    m_gathering.moveTo(recording.segment);
    writeSegmentHead();
    m_seekHead.writePlace(m_form.seekHeadPlaceBytes);
    m_info->resume(recording.tracks, m_seekHead);
    m_gathering.discard();
    m_seekHead.listAt<libmatroska::KaxTracks>(recording.tracks);
    if (recording.attachments) {
        m_seekHead.listAt<libmatroska::KaxAttachments>(*recording.attachments);
    }
    m_annotations.resume(recording.chapters, recording.tags);
    if (recording.indexPlace) {
        m_reservedIndex.resume(*recording.indexPlace);
    }
    for (const CutRecording::CuePoint& point : recording.cuePoints) {
        m_cues.announce({point.timeNs, point.track, point.relativePosition, point.durationNs});
        m_cues.keepAnnounced(point.clusterPosition);
    }
    m_clusters->resumeBehind(recording.endNs);
    m_gathering.moveTo(recording.end);
}

void CMatroskaFile::finalise(double durationNs) {
    m_isFinished = false;
    m_clusters->flushCluster();
    // Not longer than what is there: the last clusters may be lost.
    m_info->setDuration(std::min(durationNs, static_cast<double>(m_clusters->writtenEndNs())));
    m_isFinished = true;
    if (m_isLive || !m_gathering.isPositionSure()) {
        return; // patches could hit anything
    }
    m_patcher.begin();
    try {
        patch(m_dataStart + m_gathering.skippedBytes());
    } catch (const std::bad_alloc&) {
        m_isFinished = false;
        m_gathering.discard();
    } catch (...) { // whatever was written so far stays, and can be read
        m_gathering.discard();
    }
    m_io.cutOffAt(m_patcher.end());
}

// The data's start tells the Segment's size: all between it and the end belongs to the Segment.
void CMatroskaFile::patch(UINT64 dataStart) {
    m_patcher.writeLostHeadParts();
    m_info->patch(m_patcher, m_seekHead);
    m_reservedIndex.empty(m_patcher);
    writeCues();
    patchAnnotations();
    m_seekHead.fillPlace(m_patcher);
    overwriteSegmentSize(m_patcher.end() - dataStart);
    m_annotations.clearPlaces();
}

void CMatroskaFile::observeBlocks(const std::vector<libmatroska::KaxTrackEntry*>& entries) {
    if (!m_options.isStrict() || !m_options.trackStatistics || m_isWebm || m_isLive) {
        return;
    }
    std::vector<UINT64> uids;
    uids.reserve(entries.size());
    for (libmatroska::KaxTrackEntry* const entry : entries) {
        uids.push_back(libebml::GetChild<libmatroska::KaxTrackUID>(*entry).GetValue());
    }
    m_statistics.setTracks(uids);
    m_clusters->observe(&m_statistics);
}

template <typename Element>
void CMatroskaFile::append(Element& element) {
    if (m_patcher.append(element)) {
        m_seekHead.list(element);
    }
}

// Statistics: none of a recording that is resumed, since it is not known what was written of its tracks.
void CMatroskaFile::patchAnnotations() {
    auto tags = std::make_unique<libmatroska::KaxTags>();
    for (const CTrackStatistics::Track& track : m_statistics.tracks()) {
        AddStatisticsTag(*tags, track, m_origin);
    }
    m_annotations.patch(std::move(tags));
}

void CMatroskaFile::writeCues() {
    if (m_cues.pointCount() > 0 && !writeCuesInFront()) {
        append(m_cues);
    }
}

bool CMatroskaFile::writeCuesInFront() {
    if (!m_reservedIndex.isThere()) {
        return false;
    }
    m_cues.UpdateSize();
    const UINT64 size = m_cues.ElementSize();
    if (!m_reservedIndex.takes(size)) {
        m_cuesBeyondPlace = size;
        return false;
    }
    const bool isThere = m_reservedIndex.fill(m_cues, m_patcher);
    if (isThere) {
        m_seekHead.listAt<libmatroska::KaxCues>(m_reservedIndex.position());
    }
    return isThere;
}

// The library would accept a size that the field cannot hold, and write a wrong one.
void CMatroskaFile::overwriteSegmentSize(UINT64 dataBytes) {
    if (m_form.fitsSegmentSizeField(dataBytes) && m_segment.ForceSize(dataBytes)) {
        (void)m_patcher.arrives([this] { m_segment.OverwriteHead(m_gathering); });
    }
}

} // namespace mkv
