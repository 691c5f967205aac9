// CMatroskaFile: one file from its head to its finalisation: what is written in which order, and patched at the end.
// Units: nanoseconds, bytes. Owner: the writer, while the file is open; the output is not owned.
// Threads: the writer's. Errors: the C strings of writer_errors.h, what the output throws, std::bad_alloc. Positions
// are counted from the output's start; an element that a failed write lost is listed nowhere.
// Destroying it frees everything and writes nothing.
#pragma once

#include <functional>
#include <vector>

#include <ebml/EbmlVoid.h>
#include <matroska/KaxSeekHead.h>
#include <matroska/KaxSegment.h>

#include "mkv/cluster_writer.h"
#include "mkv/gathering_io.h"
#include "mkv/mkv_cues.h"
#include "mkv/mkv_track.h"
#include "mkv/segment_sizes.h"

class CMatroskaFile {
  public:
    explicit CMatroskaFile(CFileOutput& io);
    CMatroskaFile(const CMatroskaFile&) = delete;
    CMatroskaFile& operator=(const CMatroskaFile&) = delete;
    ~CMatroskaFile() = default;

    // The four steps of opening, in this order. The tracks outlive the file. It begins at the output's start.
    void writeHead(const char* docType);
    void writeTracks(const MkvTrackList& tracks);
    void writeAttachments(const std::vector<const MuxAttachment*>& records);
    void startFirstCluster() { m_clusters.startCluster(0); }

    [[nodiscard]] CClusterWriter& clusters() { return m_clusters; }

    // Writes the last cluster, fills the places reserved at the head, and cuts off what the output held behind the end.
    // Throws only before anything is patched.
    void finalise(double durationNs);

  private:
    void writeSegmentHead();
    void writePlaceholder(libebml::EbmlVoid& placeholder);
    void flushHeadPart();
    void patch(libmatroska::KaxInfo& info);
    void writeLostHeadParts();
    [[nodiscard]] bool arrives(const std::function<void()>& write);
    [[nodiscard]] bool fillPlace(libebml::EbmlVoid& place, libebml::EbmlMaster& element, bool withDefaults,
                                 UINT64& placeBytes);
    void writeCues();
    void overwriteSegmentSize();

    CFileOutput& m_io;
    CGatheringIO m_gathering;
    std::vector<LostBytes> m_lostHeadParts; // written again at the end: without them the file cannot be read
    UINT64 m_end = 0;                       // of the file, without what is patched
    libmatroska::KaxSegment m_segment;
    libmatroska::KaxSeekHead m_seekHead;
    libebml::EbmlVoid m_seekHeadPlace;
    libebml::EbmlVoid m_infoPlace;
    CMkvCues m_cues;
    SegmentSizes m_sizes;
    CClusterWriter m_clusters; // the last, since it uses the others until its end
};
