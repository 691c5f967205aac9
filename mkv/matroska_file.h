// CMatroskaFile: one file from its head to its finalisation: what is written in which order, and patched at the end.
// Units: nanoseconds, bytes. Owner: the writer, while the file is open; the output is not owned.
// Threads: the writer's. Errors: the C strings of writer_errors.h, what the output throws, std::bad_alloc.
// Destroying it frees everything and writes nothing.
#pragma once

#include <optional>
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
    explicit CMatroskaFile(libebml::IOCallback& io);
    CMatroskaFile(const CMatroskaFile&) = delete;
    CMatroskaFile& operator=(const CMatroskaFile&) = delete;
    ~CMatroskaFile() = default;

    // The four steps of opening, in this order. The tracks outlive the file.
    void writeHead(const char* docType);
    void writeTracks(const MkvTrackList& tracks);
    void writeAttachments(const std::vector<const MuxAttachment*>& records);
    void startFirstCluster() { m_clusters.startCluster(0); }

    [[nodiscard]] CClusterWriter& clusters() { return m_clusters; }

    // Writes the last cluster and fills the places reserved at the head. Throws only before anything is patched.
    void finalise(double durationNs);

  private:
    void writeSegmentHead();
    void writePlaceholder(libebml::EbmlVoid& placeholder);
    void patch(libmatroska::KaxInfo& info);
    [[nodiscard]] bool fillPlace(libebml::EbmlVoid& place, libebml::EbmlMaster& element, bool withDefaults,
                                 UINT64& placeBytes);
    void writeCues();
    void overwriteSegmentSize();

    libebml::IOCallback& m_io;
    CGatheringIO m_gathering;
    libmatroska::KaxSegment m_segment;
    libmatroska::KaxSeekHead m_seekHead;
    libebml::EbmlVoid m_seekHeadPlace;
    libebml::EbmlVoid m_infoPlace;
    CMkvCues m_cues;
    SegmentSizes m_sizes;
    CClusterWriter m_clusters; // the last, since it uses the others until its end
};
