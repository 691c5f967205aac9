// CMkvWriter: writes one Matroska or WebM file a start of streaming, or several, one after the other: tracks are
// registered and attachments added while it is closed, packets are written while it is open.
// Units: packets in 100 ns, the duration in nanoseconds. Owner: the filter; the output is not owned.
// Threads: under the filter's writer lock; duration, output format, attachments, chapters and tags from any thread.
// Errors: the C strings of writer_errors.h, NotWebmError, std::bad_alloc; after a failed Open or Close call abandon.
#pragma once

#include <atomic>
#include <memory>
#include <optional>

#include "mkv/matroska_file.h"
#include "mkv/mkv_io.h"
#include "mkv/writer_input.h"
#include "records/attachment_list.h"
#include "records/chapter.h"
#include "records/record_list.h"
#include "records/tag.h"

class CMkvWriter {
  public:
    static constexpr UINT32 kMatroskaFormat = 0;
    static constexpr UINT32 kWebMFormat = 1;

    CMkvWriter() = default;
    CMkvWriter(const CMkvWriter&) = delete;
    CMkvWriter& operator=(const CMkvWriter&) = delete;
    ~CMkvWriter() = default;

    // The track type that Matroska gives the major type: 1 video, 2 audio, 17 subtitle.
    [[nodiscard]] static int getTrackType(const AM_MEDIA_TYPE& type);

    // The next track of the next file; Close forgets the tracks. Copies both.
    void registerTrack(const AM_MEDIA_TYPE& type, const TrackSettings& settings);
    void registerTrack(const AM_MEDIA_TYPE& type, const TrackSettings& settings, const MuxTrackFlags& flags);
    void registerTrack(const AM_MEDIA_TYPE& type, const TrackSettings& settings, const MuxTrackFlags& flags,
                       const MuxTrackColour& colour);

    // Attachments stay for all files to come. False, and no effect, for 2 GiB of data or more.
    bool addAttachment(const MuxAttachment& attachment) { return m_attachments.Add(attachment); }
    [[nodiscard]] size_t attachmentCount() const { return m_attachments.Count(); }
    // Null beyond the end.
    [[nodiscard]] const MuxAttachment* attachment(size_t i) const { return m_attachments.At(i); }

    // What strict files are told, the open one until it is closed. They have a lock of their own.
    [[nodiscard]] records::CRecordList<records::Chapter>& chapters() { return m_chapters; }
    [[nodiscard]] records::CRecordList<records::Tag>& tags() { return m_tags; }

    // Other values are ignored.
    void setOutputFormat(UINT32 format);
    [[nodiscard]] UINT32 outputFormat() const { return m_outputFormat; }

    // Writes the head of the file; what was written stays there when it throws. A strict WebM file that cannot be one
    // is not begun.
    void Open(CMkvIO* io, const records::FileOptions& options = {});
    // A packet of a stream that is no track is dropped.
    void WritePacket(const mkv::Packet& packet);
    // Whether a write did not bring all of its bytes since the last call, whatever it answered.
    [[nodiscard]] bool takeUntoldLoss() { return m_file && m_file->takeUntoldLoss(); }
    // Finalises the file; once it has begun to patch the head it swallows every exception.
    void Close();

    // ---- The next file of the same tracks, while one is open ----

    // Where a file lies in the recording, in units of 100 ns of the first file's times.
    struct Part {
        REFERENCE_TIME start = 0;  // where it begins: chapters that end before it are not its own
        REFERENCE_TIME origin = 0; // the time that its own times count from
        bool isFirst = true;
    };
    // Writes the head of that one; the open file is open as before. What it throws, leaves no next file behind.
    void openNext(CMkvIO* io, const records::FileOptions& options, const Part& part);
    // The open file ends for good, as Close does it; to be called once more when it throws.
    void finishBeforeNext();
    // The next one is the open one; the output of the one before is forgotten, and so is that one if it is there still.
    void goOnWithNext() noexcept;
    // Instead of both.
    void dropNext() noexcept { m_next = {}; }

    // Of the open file: see CClusters and CMatroskaFile.
    [[nodiscard]] bool isKeyframe(const mkv::Packet& packet) const;
    [[nodiscard]] REFERENCE_TIME shiftOf(UINT32 stream) const;
    [[nodiscard]] UINT64 fileBytes();

    // False when memory ran out while the last file's head was patched: all the rest of the file is there.
    [[nodiscard]] bool isFinished() const { return m_isFinished; }
    // Of the file that was finished last: its index stands at the end since it does not fit into the room that was kept
    // for it.
    struct IndexBeyondPlace {
        UINT64 bytes;
        UINT64 placeBytes;
    };
    [[nodiscard]] const std::optional<IndexBeyondPlace>& indexBeyondPlace() const { return m_indexBeyondPlace; }
    // Forgets the output.
    void detach() noexcept { m_io = nullptr; }
    // Releases all that belongs to the file, the tracks and the output, and writes nothing.
    void abandon() noexcept;
    [[nodiscard]] bool isOpen() const { return m_io != nullptr; }

    // The clusters that are in the files of the recording, or were in those of the last one; for any thread.
    [[nodiscard]] UINT64 writtenClusters() const { return m_writtenClusters.load(std::memory_order_relaxed); }
    void forgetClusters();

    // The greatest end time of a block of the recording, in nanoseconds of its first file.
    [[nodiscard]] double duration() const { return m_durationNs; }

  private:
    using File = std::unique_ptr<mkv::CMatroskaFile>;

    void writeHead(File& file, CMkvIO* io, const records::FileOptions& options);
    static void writeRestOfHead(mkv::CMatroskaFile& file, mkv::Annotations annotations);
    [[nodiscard]] mkv::Annotations annotationsOf(const Part& part) const;
    // Of the open file, whose end that is.
    [[nodiscard]] mkv::Annotations annotationsUntil(REFERENCE_TIME end) const;
    void finalise(mkv::Annotations annotations);
    void keepIndexFacts();
    void releaseFile() noexcept;
    void tellClusters();
    void tellDuration();

    CMkvIO* m_io = nullptr;
    std::atomic<UINT32> m_outputFormat{kMatroskaFormat};
    std::atomic<double> m_durationNs{0.0};
    std::atomic<UINT64> m_writtenClusters{0};
    UINT64 m_clustersBefore = 0; // in the files before the open one
    double m_fileEndNs = 0.0;    // of the open one, in its own times
    bool m_isWebm = false;       // all files of a recording
    Part m_part;
    bool m_isFinished = true;
    std::optional<IndexBeyondPlace> m_indexBeyondPlace;
    records::CAttachmentList m_attachments;
    records::CRecordList<records::Chapter> m_chapters;
    records::CRecordList<records::Tag> m_tags;
    mkv::TrackList m_tracks;
    struct Next {
        CMkvIO* io = nullptr;
        Part part;
        File file;
    };
    File m_file; // behind the tracks, which it uses
    Next m_next; // so does this
};
