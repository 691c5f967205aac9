#include "mkv/mkv_writer.h"

#include "log/logger.h"
#include "mkv/codec_mapping.h"
#include "mkv/debug_trace.h"
#include "mkv/webm_refusal.h"
#include "mkv/writer_errors.h"

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
    forgetClusters();
    m_indexBeyondPlace.reset();
    m_io = io;
    // Asked once, since any thread may set them.
    const bool isWebm = m_outputFormat == kWebMFormat;
    const auto attachments = m_attachments.All();
    if (isWebm && options.isStrict()) {
        mkv::RefuseWhatIsNotWebm(m_tracks, !attachments.empty());
    }
    writeMatroskaHead(options, isWebm);
    if (m_file->isLive()) {
        LogIfPossible([] { g_Logger << OLESTR("CMkvWriter::Open the output does not seek: written live\r\n"); });
    }
    m_file->writeTracks(m_tracks);
    m_file->writeAttachments(attachments);
    m_file->writeAnnotations({m_chapters.BeginFile(), m_tags.BeginFile()});
    m_file->startFirstCluster();
}

void CMkvWriter::writeMatroskaHead(const records::FileOptions& options, bool isWebm) {
    if (m_io == nullptr) {
        throw mkv::kNoOutputError;
    }
    m_file = std::make_unique<mkv::CMatroskaFile>(*m_io, options);
    m_file->writeHead(isWebm ? mkv::DocType::webm : mkv::DocType::matroska);
}

void CMkvWriter::WritePacket(const mkv::Packet& packet) {
    LogPacket(packet);
    if (!m_file || packet.stream >= m_file->clusters().trackEntryCount()) {
        return;
    }
    const auto endNs = m_file->clusters().addFrameToCurrentCluster(packet);
    if (endNs && static_cast<double>(*endNs) > m_durationNs) {
        m_durationNs = static_cast<double>(*endNs);
    }
    tellClusters();
}

// Written only when there is a new one: whoever reads it does not slow down the packets.
void CMkvWriter::tellClusters() {
    if (const UINT64 count = m_file->clusters().writtenCount(); count != writtenClusters()) {
        m_writtenClusters.store(count, std::memory_order_relaxed);
    }
}

void CMkvWriter::Close() {
    if (m_file) {
        m_isFinished = false;
        m_file->changeAnnotations({m_chapters.EndFile(), m_tags.EndFile()});
        m_file->finalise(m_durationNs);
        m_isFinished = m_file->isFinished();
        tellClusters();
        keepIndexFacts();
    }
    releaseFile();
    mkv::DebugTrace("Stoped.... ");
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

void CMkvWriter::abandon() noexcept {
    releaseFile();
    detach();
}

void CMkvWriter::releaseFile() noexcept {
    m_file.reset();
    m_chapters.CloseFile();
    m_tags.CloseFile();
    m_tracks.clear();
}
