// CMatroskaFile: one file from its head to its finalisation: what is written in which order, and patched at the end.
// Units: nanoseconds, bytes. Owner: the writer, while the file is open; the output is not owned.
// Threads: the writer's. Errors: the C strings of writer_errors.h, what the output throws, std::bad_alloc. Positions
// are counted from the output's start; an element that a failed write lost is listed nowhere.
// Destroying it frees everything and writes nothing.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include <matroska/KaxSegment.h>

#include "mkv/annotations.h"
#include "mkv/clusters.h"
#include "mkv/cut_recording.h"
#include "mkv/file_form.h"
#include "mkv/file_origin.h"
#include "mkv/file_patcher.h"
#include "mkv/gathering_io.h"
#include "mkv/identifiers.h"
#include "mkv/late_private_data.h"
#include "mkv/mkv_cues.h"
#include "mkv/reserved_index.h"
#include "mkv/seek_head.h"
#include "mkv/segment_info.h"
#include "mkv/track_colours.h"
#include "mkv/track_statistics.h"
#include "mkv/writer_input.h"

namespace mkv {

enum class DocType { matroska, webm };

class CMatroskaFile {
  public:
    explicit CMatroskaFile(CFileOutput& io, const records::FileOptions& options = {});
    CMatroskaFile(const CMatroskaFile&) = delete;
    CMatroskaFile& operator=(const CMatroskaFile&) = delete;
    ~CMatroskaFile() = default;

    // The steps of opening, in this order. The tracks outlive the file. It begins at the output's start.
    void writeHead(DocType docType);
    void writeTracks(const TrackList& tracks);
    // Nothing is written of none.
    void writeAttachments(const std::vector<const MuxAttachment*>& records);
    // Of a strict file, from here on until it is finalised; the later call tells all that it is to have then.
    void writeAnnotations(Annotations annotations);
    void changeAnnotations(Annotations annotations);
    // A further element of the Segment's own level; it is not kept.
    void writeElement(libebml::EbmlMaster& element);
    // Behind all that stands in front of the clusters; the room for the index comes first, where one is asked for.
    void startFirstCluster();

    // Instead of all of them: the output holds such a recording, which finalise finishes. Writes nothing itself.
    void resume(const CutRecording& recording);

    [[nodiscard]] CClusters& clusters() { return *m_clusters; }
    // From the output's start to here, with what waits in the open cluster.
    [[nodiscard]] UINT64 bytes() { return m_gathering.getFilePointer() + m_clusters->openBytes(); }

    // Whether a write did not bring all of its bytes since the last call, whatever it answered.
    [[nodiscard]] bool takeUntoldLoss() { return m_gathering.takeUntoldLoss(); }

    // Whether the output does not seek, which is asked once, when the head is written. Then the file is written for
    // those who watch it grow: its Segment has no known size, nothing is reserved, listed or patched, there are no cues
    // and no statistics, and finalise writes the last cluster and nothing else.
    [[nodiscard]] bool isLive() const { return m_isLive; }

    // Writes the last cluster, fills the places reserved at the head, and cuts off what the output held behind the end.
    // Throws only before anything is patched.
    void finalise(double durationNs);
    // The cues' own size, where there is room for cues and they stand at the end since they do not fit into it.
    [[nodiscard]] std::optional<UINT64> cuesBeyondPlace() const { return m_cuesBeyondPlace; }
    [[nodiscard]] UINT64 indexPlaceBytes() const { return m_reservedIndex.bytes(); }
    // Whether memory sufficed for it.
    [[nodiscard]] bool isFinished() const { return m_isFinished; }

  private:
    void writeSegmentHead();
    void writeLiveInfo();
    void writePlacesAndInfo();
    void writeAttachmentsElement(const std::vector<const MuxAttachment*>& records);
    // As the profile wants it.
    void fillTrackEntry(libmatroska::KaxTrackEntry& entry, UINT64 number, const Track& track);
    void keepFirstKeyframe(UINT32 stream, std::span<const BYTE> frame);
    void patch(UINT64 dataStart);
    void writeCues();
    [[nodiscard]] bool writeCuesInFront();
    void observeBlocks(const std::vector<libmatroska::KaxTrackEntry*>& entries);
    // Chapters, tags and statistics.
    void patchAnnotations();
    // Behind all that the file has, and listed.
    template <typename Element>
    void append(Element& element);
    void overwriteSegmentSize(UINT64 dataBytes);

    const records::FileOptions m_options;
    const FileForm& m_form;
    const FileOrigin m_origin;
    CIdentifiers m_identifiers;
    CFileOutput& m_io;
    CGatheringIO m_gathering;
    libmatroska::KaxSegment m_segment;
    CFilePatcher m_patcher;
    CLatePrivateData m_latePrivateData;
    CTrackColours m_colours;
    CSeekHead m_seekHead;
    CAnnotations m_annotations;
    TrackUids m_trackUids;
    bool m_isFinished = false;
    bool m_isWebm = false;
    bool m_isLive = false;
    UINT64 m_dataStart = 0; // of the Segment, behind its head
    std::unique_ptr<CSegmentInfo> m_info;
    UINT64 m_indexBytes = 0; // that are to be kept
    CReservedIndex m_reservedIndex;
    std::optional<UINT64> m_cuesBeyondPlace;
    CMkvCues m_cues;
    CTrackStatistics m_statistics;         // without tracks when the file is to have none
    std::unique_ptr<CClusters> m_clusters; // the last, since it uses the others until its end
};

} // namespace mkv
