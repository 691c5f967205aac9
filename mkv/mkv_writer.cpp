#include "mkv/mkv_writer.h"

#include <algorithm>
#include <utility>

#include "dshow/ref_time.h"
#include "log/logger.h"
#include "mkv/codec_mapping.h"
#include "mkv/debug_trace.h"
#include "mkv/webm_refusal.h"
#include "mkv/writer_errors.h"
#include "records/part_chapters.h"

namespace {

void LogPacket(const mkv::Packet& packet) {
    if (!g_Logger.IsEnabled()) {
        return;
    }
    LogIfPossible([&packet] {
        g_Logger << OLESTR("CMkvWriter::WritePacket stream=") << static_cast<INT32>(packet.stream) << OLESTR(" start=")
                 << packet.start << OLESTR(" stop=") << packet.stop << OLESTR(" size=")
                 << static_cast<INT32>(packet.size) << OLESTR("\r\n");
    });
}

} // namespace

int CMkvWriter::getTrackType(const AM_MEDIA_TYPE& type) {
    return mkv::TrackTypeOf(type);
}

void CMkvWriter::registerTrack(const AM_MEDIA_TYPE& type, const TrackSettings& settings) {
    registerTrack(type, settings, records::UnsetTrackFlags(settings.index));
}

void CMkvWriter::registerTrack(const AM_MEDIA_TYPE& type, const TrackSettings& settings, const MuxTrackFlags& flags) {
    registerTrack(type, settings, flags, records::UntoldColour(settings.index));
}

void CMkvWriter::registerTrack(const AM_MEDIA_TYPE& type, const TrackSettings& settings, const MuxTrackFlags& flags,
                               const MuxTrackColour& colour) {
    m_tracks.push_back({CMediaType(type), records::CTrackSettingsRow(settings), flags, colour});
}

void CMkvWriter::setOutputFormat(UINT32 format) {
    if (format == kMatroskaFormat || format == kWebMFormat) {
        m_outputFormat = format;
    }
}

void CMkvWriter::Open(CMkvIO* io, const records::FileOptions& options) {
    m_file.reset(); // of an open that failed
    m_durationNs = 0.0;
    m_fileEndNs = 0.0;
    forgetClusters();
    m_indexBeyondPlace.reset();
    m_part = {};
    m_io = io;
    m_isWebm = m_outputFormat == kWebMFormat; // asked once, since any thread may set it
    writeHead(m_file, io, options);
    writeRestOfHead(*m_file, {m_chapters.BeginFile(), m_tags.BeginFile()});
}

// What was thrown leaves the file as far as it is written.
void CMkvWriter::writeHead(File& file, CMkvIO* io, const records::FileOptions& options) {
    const auto attachments = m_attachments.All(); // asked once, too
    if (m_isWebm && options.isStrict()) {
        mkv::RefuseWhatIsNotWebm(m_tracks, !attachments.empty());
    }
    if (io == nullptr) {
        throw mkv::kNoOutputError;
    }
    file = std::make_unique<mkv::CMatroskaFile>(*io, options);
    file->writeHead(m_isWebm ? mkv::DocType::webm : mkv::DocType::matroska);
    if (file->isLive()) {
        LogIfPossible([] { g_Logger << OLESTR("CMkvWriter::Open the output does not seek: written live\r\n"); });
    }
    file->writeTracks(m_tracks);
    file->writeAttachments(attachments);
}

void CMkvWriter::writeRestOfHead(mkv::CMatroskaFile& file, mkv::Annotations annotations) {
    file.writeAnnotations(std::move(annotations));
    file.startFirstCluster();
}

// ---- The next file ------------------------------------------------------------------------------------------------

void CMkvWriter::openNext(CMkvIO* io, const records::FileOptions& options, const Part& part) {
    try {
        m_next.io = io;
        m_next.part = part;
        m_next.part.isFirst = false;
        writeHead(m_next.file, io, options);
        writeRestOfHead(*m_next.file, annotationsOf(m_next.part));
    } catch (...) {
        dropNext();
        throw;
    }
}

void CMkvWriter::finishBeforeNext() {
    if (m_file) {
        finalise(annotationsUntil(m_next.part.start));
        m_file.reset();
    }
}

void CMkvWriter::goOnWithNext() noexcept {
    m_file = std::move(m_next.file);
    m_io = m_next.io;
    m_part = m_next.part;
    m_clustersBefore = writtenClusters();
    m_fileEndNs = 0.0;
    dropNext();
}

mkv::Annotations CMkvWriter::annotationsOf(const Part& part) const {
    return {records::ChaptersOfPart(m_chapters.All(), {part.start, std::nullopt, part.origin}), m_tags.All()};
}

mkv::Annotations CMkvWriter::annotationsUntil(REFERENCE_TIME end) const {
    return {records::ChaptersOfPart(m_chapters.All(), {m_part.start, end, m_part.origin}), m_tags.All()};
}

bool CMkvWriter::isKeyframe(const mkv::Packet& packet) const {
    return m_file && packet.stream < m_file->clusters().trackEntryCount() && m_file->clusters().isKeyframe(packet);
}

REFERENCE_TIME CMkvWriter::shiftOf(UINT32 stream) const {
    return m_file ? m_file->clusters().shiftOf(stream) : 0;
}

UINT64 CMkvWriter::fileBytes() {
    return m_file ? m_file->bytes() : 0;
}

// ---- Packets and the end ------------------------------------------------------------------------------------------

void CMkvWriter::WritePacket(const mkv::Packet& packet) {
    LogPacket(packet);
    if (!m_file || packet.stream >= m_file->clusters().trackEntryCount()) {
        return;
    }
    const auto endNs = m_file->clusters().addFrameToCurrentCluster(packet);
    if (endNs) {
        m_fileEndNs = std::max(m_fileEndNs, static_cast<double>(*endNs));
        tellDuration();
    }
    tellClusters();
}

// It never goes back, though the files of a recording may overlap by a picture.
void CMkvWriter::tellDuration() {
    const double endNs = m_fileEndNs + static_cast<double>(m_part.origin) * kNsPerReferenceTime;
    if (endNs > m_durationNs) {
        m_durationNs = endNs;
    }
}

// Written only when there is a new one: whoever reads it does not slow down the packets.
void CMkvWriter::tellClusters() {
    if (const UINT64 count = m_clustersBefore + m_file->clusters().writtenCount(); count != writtenClusters()) {
        m_writtenClusters.store(count, std::memory_order_relaxed);
    }
}

void CMkvWriter::Close() {
    if (m_file) {
        auto chapters = m_chapters.EndFile();
        if (!m_part.isFirst) {
            chapters = records::ChaptersOfPart(std::move(chapters), {m_part.start, std::nullopt, m_part.origin});
        }
        finalise({std::move(chapters), m_tags.EndFile()});
    }
    releaseFile();
    mkv::DebugTrace("Stoped.... ");
}

void CMkvWriter::finalise(mkv::Annotations annotations) {
    m_isFinished = false;
    m_indexBeyondPlace.reset();
    m_file->changeAnnotations(std::move(annotations));
    m_file->finalise(m_fileEndNs);
    m_isFinished = m_file->isFinished();
    tellClusters();
    keepIndexFacts();
}

void CMkvWriter::keepIndexFacts() {
    if (const auto bytes = m_file->cuesBeyondPlace()) {
        m_indexBeyondPlace = {*bytes, m_file->indexPlaceBytes()};
        LogIfPossible([this] {
            g_Logger << OLESTR("CMkvWriter::Close the index is at the end: it takes ")
                     << static_cast<INT64>(m_indexBeyondPlace->bytes) << OLESTR(" bytes, kept were ")
                     << static_cast<INT64>(m_indexBeyondPlace->placeBytes) << OLESTR("\r\n");
        });
    }
}

void CMkvWriter::forgetClusters() {
    m_clustersBefore = 0;
    m_writtenClusters.store(0, std::memory_order_relaxed);
}

void CMkvWriter::abandon() noexcept {
    releaseFile();
    detach();
}

void CMkvWriter::releaseFile() noexcept {
    dropNext();
    m_file.reset();
    m_chapters.CloseFile();
    m_tags.CloseFile();
    m_tracks.clear();
}
