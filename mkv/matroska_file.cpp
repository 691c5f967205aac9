#include "mkv/matroska_file.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <new>
#include <string_view>
#include <utility>

#include <ebml/EbmlHead.h>
#include <ebml/EbmlSubHead.h>
#include <matroska/KaxAttachments.h>

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

constexpr UINT64 kSeekHeadPlaceHeadBytes = 3;
constexpr int kPatchTries = 2;
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
      m_identifiers(options.seed), m_io(io), m_gathering(io),
      m_arrives([this](const std::function<void()>& write) { return arrives(write); }),
      m_list([this](const libebml::EbmlElement& element) { m_seekHead.IndexThis(element, m_segment); }),
      m_info(CSegmentInfo::of(m_options, m_origin, m_gathering, m_identifiers)),
      m_clusters(MakeClusters(options.isStrict(), m_gathering, m_segment, m_cues)) {
    m_cues.SetGlobalTimecodeScale(kTimecodeScaleNs);
}

void CMatroskaFile::writeHead(const char* docType) {
    m_isWebm = std::string_view(docType) == kWebMDocType;
    m_gathering.moveTo(0);
    libebml::EbmlHead head;
    SetChild<libebml::EDocType>(head, std::string(docType));
    SetChild<libebml::EDocTypeVersion>(head, m_form.docTypeVersion);
    SetChild<libebml::EDocTypeReadVersion>(head, m_form.docTypeReadVersion);
    head.Render(m_gathering, true);
    writeSegmentHead();
    writeSeekHeadPlace();
    m_info->open(m_isWebm, m_list);
    flushHeadPart();
}

// A part that was lost keeps its place, so that all behind it lies where it would.
void CMatroskaFile::flushHeadPart() {
    const UINT64 end = m_gathering.getFilePointer();
    m_gathering.flush();
    if (auto lost = m_gathering.takeLost()) {
        m_lostHeadParts.push_back(std::move(*lost));
        m_gathering.moveTo(end);
    }
}

// The library writes a known size of 0, with which readers see a recording that was cut off as an empty file.
void CMatroskaFile::writeSegmentHead() {
    m_segment.WriteHead(m_gathering, m_form.segmentSizeFieldBytes);
    m_gathering.overwriteTail(UnknownSize(m_form.segmentSizeFieldBytes));
    m_dataStart = m_gathering.getFilePointer();
}

void CMatroskaFile::writeSeekHeadPlace() {
    m_seekHeadPlace.SetSize(m_form.seekHeadPlaceBytes - kSeekHeadPlaceHeadBytes);
    m_seekHeadPlace.Render(m_gathering);
}

void CMatroskaFile::fillTrackEntry(libmatroska::KaxTrackEntry& entry, UINT64 number, const Track& track) {
    if (m_options.isStrict()) {
        FillStrictTrackEntry(entry, number, track, m_identifiers, m_isWebm);
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
        if (TrackTypeOf(track.type) == media::kTrackTypeVideo) {
            cueTrack = static_cast<INT32>(entries.size()) - 1; // the last video track wins
        }
    }
    const UINT64 size = element.Render(m_gathering, false);
    flushHeadPart();
    if (size > 0) { // without tracks there is no element either
        m_seekHead.IndexThis(element, m_segment);
    }
    m_clusters->setTracks(tracks, entries, cueTrack);
    observeBlocks(entries);
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
    m_seekHead.IndexThis(element, m_segment);
}

// What was written then is rendered once more, since the library learns positions that way alone, and forgotten.
void CMatroskaFile::resume(const CutRecording& recording) {
    m_gathering.moveTo(recording.segment);
    writeSegmentHead();
    writeSeekHeadPlace();
    m_info->resume(recording.tracks, m_list);
    m_gathering.discard();
    indexAt<libmatroska::KaxTracks>(recording.tracks);
    if (recording.attachments) {
        indexAt<libmatroska::KaxAttachments>(*recording.attachments);
    }
    for (const CutRecording::CuePoint& point : recording.cuePoints) {
        m_cues.announce({point.timeNs, point.track, point.relativePosition, point.durationNs});
        m_cues.keepAnnounced(point.clusterPosition);
    }
    m_clusters->resumeBehind(recording.endNs);
    m_gathering.moveTo(recording.end);
}

template <typename Element>
void CMatroskaFile::indexAt(UINT64 position) {
    Element element;
    m_gathering.moveTo(position);
    element.Render(m_gathering, true, false, true); // without children it is a default, and not rendered else
    m_gathering.discard();
    m_seekHead.IndexThis(element, m_segment);
}

void CMatroskaFile::finalise(double durationNs) {
    m_isFinished = false;
    m_clusters->flushCluster();
    // Not longer than what is there: the last clusters may be lost.
    m_info->setDuration(std::min(durationNs, static_cast<double>(m_clusters->writtenEndNs())));
    m_isFinished = true;
    if (!m_gathering.isPositionSure()) {
        return; // patches could hit anything
    }
    m_end = m_gathering.getFilePointer();
    try {
        patch(m_dataStart + m_gathering.skippedBytes());
    } catch (const std::bad_alloc&) {
        m_isFinished = false;
        m_gathering.discard();
    } catch (...) { // whatever was written so far stays, and can be read
        m_gathering.discard();
    }
    m_io.cutOffAt(m_end);
}

// The data's start tells the Segment's size: all between it and the end belongs to the Segment.
void CMatroskaFile::patch(UINT64 dataStart) {
    writeLostHeadParts();
    m_info->patch(m_arrives, m_list);
    writeCues();
    writeStatistics();
    fillSeekHeadPlace();
    overwriteSegmentSize(m_end - dataStart);
}

void CMatroskaFile::writeLostHeadParts() {
    for (const LostBytes& part : std::exchange(m_lostHeadParts, {})) {
        m_gathering.moveTo(part.position);
        m_gathering.write(part.bytes.data(), part.bytes.size());
        m_gathering.flush();
    }
    (void)m_gathering.takeLost();
    m_gathering.moveTo(m_end);
}

void CMatroskaFile::observeBlocks(const std::vector<libmatroska::KaxTrackEntry*>& entries) {
    if (!m_options.isStrict() || !m_options.trackStatistics || m_isWebm) {
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

// Behind all that the file has.
template <typename Element>
void CMatroskaFile::writeBehind(Element& element) {
    UINT64 size = 0;
    if (arrives([&] { size = element.Render(m_gathering, false); })) {
        m_end += size;
        m_list(element);
    }
}

// None of a recording that is resumed, since it is not known what was written of its tracks.
void CMatroskaFile::writeStatistics() {
    libmatroska::KaxTags tags;
    for (const CTrackStatistics::Track& track : m_statistics.tracks()) {
        AddStatisticsTag(tags, track, m_origin);
    }
    if (tags.ListSize() > 0) {
        writeBehind(tags);
    }
}

void CMatroskaFile::writeCues() {
    if (m_cues.pointCount() > 0) {
        writeBehind(m_cues);
    }
}

// One that does not fit or was lost leaves the place as it is, and as long.
void CMatroskaFile::fillSeekHeadPlace() {
    (void)arrives([this] { m_seekHeadPlace.ReplaceWith(m_seekHead, m_gathering, true, false); });
}

// Nobody is told of a write that fails now, so it is made once more.
bool CMatroskaFile::arrives(const std::function<void()>& write) {
    for (int i = 0; i < kPatchTries; ++i) {
        m_gathering.moveTo(m_end);
        write();
        m_gathering.flush();
        if (!m_gathering.takeLost()) {
            return true;
        }
    }
    return false;
}

// The library would accept a size that the field cannot hold, and write a wrong one.
void CMatroskaFile::overwriteSegmentSize(UINT64 dataBytes) {
    if (m_form.fitsSegmentSizeField(dataBytes) && m_segment.ForceSize(dataBytes)) {
        (void)arrives([this] { m_segment.OverwriteHead(m_gathering); });
    }
}

} // namespace mkv
