#include "mkv/matroska_file.h"

#include <array>
#include <cstdlib>
#include <ctime>

#include <ebml/EbmlHead.h>
#include <ebml/EbmlSubHead.h>
#include <matroska/KaxInfo.h>

#include "mkv/attachment_writer.h"
#include "mkv/cluster_rule.h"
#include "mkv/codec_description.h"
#include "mkv/element_values.h"
#include "mkv/segment_info.h"
#include "mkv/track_entry_builder.h"

namespace {

constexpr UINT64 kDocTypeVersion = 2;
constexpr UINT64 kPlaceholderDataBytes = 300;
constexpr std::array<BYTE, mkv::kSegmentSizeFieldBytes> kUnknownSize{0x0f, 0xff, 0xff, 0xff, 0xff};

} // namespace

CMatroskaFile::CMatroskaFile(libebml::IOCallback& io)
    : m_io(io), m_gathering(io), m_clusters(m_gathering, m_segment, m_cues) {
    m_cues.SetGlobalTimecodeScale(mkv::kTimecodeScaleNs);
}

void CMatroskaFile::writeHead(const char* docType) {
    libebml::EbmlHead head;
    mkv::SetChild<libebml::EDocType>(head, std::string(docType));
    mkv::SetChild<libebml::EDocTypeVersion>(head, kDocTypeVersion);
    mkv::SetChild<libebml::EDocTypeReadVersion>(head, kDocTypeVersion);
    head.Render(m_gathering, true);
    writeSegmentHead();
    writePlaceholder(m_seekHeadPlace);
    writePlaceholder(m_infoPlace);
    m_gathering.flush();
}

// The library writes a known size of 0, with which readers see a recording that was cut off as an empty file.
void CMatroskaFile::writeSegmentHead() {
    m_sizes.head = m_segment.WriteHead(m_gathering, mkv::kSegmentSizeFieldBytes);
    m_gathering.overwriteTail(kUnknownSize);
}

void CMatroskaFile::writePlaceholder(libebml::EbmlVoid& placeholder) {
    placeholder.SetSize(kPlaceholderDataBytes);
    placeholder.Render(m_gathering);
}

void CMatroskaFile::writeTracks(const MkvTrackList& tracks) {
    std::srand(static_cast<unsigned>(std::time(nullptr))); // for the track UIDs
    auto& element = libebml::GetChild<libmatroska::KaxTracks>(m_segment);
    std::vector<libmatroska::KaxTrackEntry*> entries;
    INT32 cueTrack = kNoCueTrack;
    for (const MkvTrack& track : tracks) {
        auto& entry = entries.empty() ? libebml::GetChild<libmatroska::KaxTrackEntry>(element)
                                      : libebml::GetNextChild(element, *entries.back());
        entries.push_back(&entry);
        mkv::FillTrackEntry(entry, entries.size(), track);
        if (mkv::TrackTypeOf(track.type) == mkv::kTrackTypeVideo) {
            cueTrack = static_cast<INT32>(entries.size()) - 1; // the last video track wins
        }
    }
    m_sizes.tracks = element.Render(m_gathering, false);
    m_gathering.flush();
    if (m_sizes.tracks > 0) { // without tracks there is no element either
        m_seekHead.IndexThis(element, m_segment);
    }
    m_clusters.setTracks(tracks, std::move(entries), cueTrack);
}

void CMatroskaFile::writeAttachments(const std::vector<const MuxAttachment*>& records) {
    if (records.empty()) {
        return;
    }
    CAttachmentWriter attachments(records);
    m_sizes.attachments = attachments.render(m_io); // not gathered: that would copy them
    m_seekHead.IndexThis(attachments.element(), m_segment);
}

void CMatroskaFile::finalise(double durationNs) {
    m_clusters.flushCluster();
    m_sizes.clusters = m_clusters.writtenBytes();
    libmatroska::KaxInfo info;
    mkv::WriteSegmentInfo(info, durationNs);
    try {
        patch(info);
    } catch (...) { // whatever was written so far stays, and can be read
        m_gathering.discard();
    }
}

void CMatroskaFile::patch(libmatroska::KaxInfo& info) {
    if (fillPlace(m_infoPlace, info, true, m_sizes.infoPlace)) {
        m_seekHead.IndexThis(info, m_segment);
    }
    writeCues();
    static_cast<void>(fillPlace(m_seekHeadPlace, m_seekHead, false, m_sizes.seekHeadPlace));
    overwriteSegmentSize();
}

// False when the element does not fit; the place then stays as it is, and is as long.
bool CMatroskaFile::fillPlace(libebml::EbmlVoid& place, libebml::EbmlMaster& element, bool withDefaults,
                              UINT64& placeBytes) {
    const UINT64 replaced = place.ReplaceWith(element, m_gathering, true, withDefaults);
    m_gathering.flush();
    const bool fits = replaced != INVALID_FILEPOS_T;
    placeBytes = fits ? replaced : place.ElementSize();
    return fits;
}

void CMatroskaFile::writeCues() {
    if (m_cues.pointCount() == 0) {
        return;
    }
    m_cues.restorePoints();
    m_sizes.cues = m_cues.Render(m_gathering, false);
    m_gathering.flush();
    m_seekHead.IndexThis(m_cues, m_segment);
}

// The library would accept a size that the field cannot hold, and write a wrong one.
void CMatroskaFile::overwriteSegmentSize() {
    const UINT64 dataBytes = m_sizes.dataSize(m_segment.HeadSize());
    if (mkv::FitsSegmentSizeField(dataBytes) && m_segment.ForceSize(dataBytes)) {
        m_segment.OverwriteHead(m_gathering);
        m_gathering.flush();
    }
}
