#include "sources/text/subtitle_reader.h"

#include <algorithm>

#include "dshow/media_subtypes.h"
#include "media/format_builder.h"

namespace subtitles {

namespace {

CMediaType TypeOf(const SubtitleFile& file) {
    const auto* const header = reinterpret_cast<const BYTE*>(file.header.data());
    const media::ByteView bytes(header, file.header.size());
    switch (file.format) {
    case Format::Ssa:
        return media::SubtitleType(mediasubtype::kSsa, "und", bytes);
    case Format::Ass:
        return media::SubtitleType(mediasubtype::kAss, "und", bytes);
    case Format::WebVtt:
        return media::SubtitleType(mediasubtype::kWebVttBoxes, "und", bytes);
    case Format::Srt:
    default:
        return media::SubtitleType(mediasubtype::kUtf8, "und", bytes);
    }
}

} // namespace

SubtitleReader::SubtitleReader(SubtitleFile file) : m_file(std::move(file)) {
    source::StreamDescription description;
    description.name = OLESTR("Subtitles");
    description.types.push_back(TypeOf(m_file));
    for (const SubtitleEvent& event : m_file.events) {
        description.largestPacket = std::max(description.largestPacket, event.text.size());
    }
    m_streams.push_back(std::move(description));
    if (!m_file.events.empty()) { // the first is the earliest
        m_shift = std::max<REFERENCE_TIME>(0, -m_file.events.front().start);
    }
}

HRESULT SubtitleReader::DamageSoFar() const {
    return m_file.isDamaged ? HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT) : S_OK;
}

bool SubtitleReader::ReadNext(source::Packet& packet) {
    if (m_next >= m_file.events.size()) {
        return false;
    }
    const SubtitleEvent& event = m_file.events[m_next++];
    packet.stream = 0;
    packet.data.assign(event.text.begin(), event.text.end());
    packet.start = event.start + m_shift;
    packet.stop = event.stop + m_shift;
    packet.hasStop = true;
    packet.keyframe = true;
    return true;
}

} // namespace subtitles
