#include "sources/avi/avi_reader.h"

#include <algorithm>
#include <cstdint>

#include "dshow/ref_time.h"
#include "sources/avi/avi_media_type.h"

namespace avi {

namespace {

// "Stream 00", as the system's own splitter calls it.
WideString PinName(size_t index) {
    const WideString number = ToWideDecimal(index);
    return WideString(OLESTR("Stream ")) + (number.size() < 2 ? OLESTR("0") : OLESTR("")) + number;
}

// Long files of fine time bases stay within 64 bits because whole seconds are counted first. What does not is a time
// that cannot be, and stays one.
REFERENCE_TIME TimeOf(const AviStream& stream, UINT64 unit) {
    if (stream.rate == 0 || stream.scale == 0) {
        return 0;
    }
    constexpr UINT64 kSecond{kReferenceTimesPerSecond};
    constexpr UINT64 kMaxSeconds = source::kMaxTime / kReferenceTimesPerSecond;
    const UINT64 ticks = unit * stream.scale;
    if (unit > UINT64_MAX / stream.scale || ticks / stream.rate > kMaxSeconds) {
        return source::kMaxTime + 1;
    }
    return static_cast<REFERENCE_TIME>(ticks / stream.rate * kSecond + ticks % stream.rate * kSecond / stream.rate);
}

} // namespace

AviReader::AviReader(std::unique_ptr<source::ByteSource> bytes, AviFile file)
    : m_bytes(std::move(bytes)), m_file(std::move(file)) {
    for (const AviStream& stream : m_file.streams) {
        source::StreamDescription description;
        description.name = PinName(m_streams.size());
        if (CMediaType type = MediaTypeOf(stream); type.IsValid()) {
            description.types.push_back(std::move(type));
        } else {
            description.problem = "the AVI stream's type is unknown";
        }
        description.largestPacket = std::min<size_t>(stream.largestChunk, source::kMaxPacketBytes);
        m_streams.push_back(std::move(description));
    }
    StartOver();
}

void AviReader::StartOver() {
    m_progress.assign(m_streams.size(), {});
    m_next = 0;
    m_lostChunk = false;
}

HRESULT AviReader::DamageSoFar() const {
    return m_file.isCutOff || m_file.lacksChunks || m_lostChunk ? HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT) : S_OK;
}

UINT64 AviReader::UnitAt(const AviStream& stream, const Progress& progress) const {
    return stream.start + (stream.sampleSize > 0 ? progress.bytes / stream.sampleSize : progress.chunks);
}

bool AviReader::ReadNext(source::Packet& packet) {
    while (m_next < m_file.chunks.size()) {
        const AviChunk& chunk = m_file.chunks[m_next++];
        const AviStream& stream = m_file.streams[chunk.stream];
        Progress& progress = m_progress[chunk.stream];
        packet.start = TimeOf(stream, UnitAt(stream, progress));
        progress.bytes += chunk.size;
        ++progress.chunks;
        if (chunk.size == 0) { // a picture that stays
            continue;
        }
        if (chunk.size > source::kMaxPacketBytes) {
            m_lostChunk = true;
            continue;
        }
        packet.stop = TimeOf(stream, UnitAt(stream, progress));
        packet.hasStop = true;
        packet.stream = chunk.stream;
        packet.keyframe = chunk.keyframe;
        packet.data.resize(chunk.size);
        if (m_bytes->ReadAt(chunk.offset, packet.data) == chunk.size) {
            return true;
        }
        m_lostChunk = true;
        return false;
    }
    return false;
}

} // namespace avi
