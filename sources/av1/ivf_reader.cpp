#include "sources/av1/ivf_reader.h"

#include "codecs/av1_units.h"
#include "codecs/bitstream_reader.h"
#include "dshow/media_subtypes.h"
#include "media/format_builder.h"
#include "sources/av1/picture_type.h"
#include "sources/base/reused_bytes.h"

namespace av1 {

namespace {

constexpr uint32_t kVp9FrameMarker = 2;
constexpr uint32_t kVp9LastProfile = 3;

// The lowest bit of the frame tag: 0 for a keyframe.
bool IsVp8Keyframe(codecs::ByteView frame) {
    return !frame.empty() && (frame[0] & 1U) == 0;
}

bool IsVp9Keyframe(codecs::ByteView frame) {
    codecs::BitstreamReader bits(frame);
    const bool isFrame = bits.ReadBits(2) == kVp9FrameMarker;
    const uint32_t low = bits.ReadBits(1);
    const uint32_t profile = bits.ReadBits(1) << 1 | low;
    bits.SkipBits(profile == kVp9LastProfile ? 1 : 0);
    const bool showsExisting = bits.ReadFlag();
    const bool isInter = bits.ReadFlag();
    return bits.IsValid() && isFrame && !showsExisting && !isInter;
}

bool IsKeyframe(IvfCodec codec, codecs::ByteView frame) {
    switch (codec) {
    case IvfCodec::Vp8:
        return IsVp8Keyframe(frame);
    case IvfCodec::Vp9:
        return IsVp9Keyframe(frame);
    case IvfCodec::Av1:
    default:
        return codecs::RandomAccessOfAv1(frame) == codecs::Av1RandomAccess::Yes;
    }
}

} // namespace

IvfReader::IvfReader(std::unique_ptr<source::ByteSource> file, const IvfHeader& header)
    : m_file(std::move(file)), m_header(header) {
    source::StreamDescription description;
    description.name = OLESTR("Video");
    description.types.push_back(MakeType());
    m_streams.push_back(std::move(description));
    StartOver();
}

CMediaType IvfReader::MakeType() const {
    media::Picture picture;
    picture.width = static_cast<LONG>(m_header.width);
    picture.height = static_cast<LONG>(m_header.height);
    picture.frameDuration = FrameDuration();
    switch (m_header.codec) {
    case IvfCodec::Vp8:
        return media::VideoInfoType(mediasubtype::kVp8, picture, BitmapHeader(picture, mediasubtype::kVp8.Data1), {});
    case IvfCodec::Vp9:
        return TypeOfPicture(mediasubtype::kVp9, picture, {});
    case IvfCodec::Av1:
    default:
        return Av1Type(picture, FirstFrame());
    }
}

// Of ticks that are frames; finer ones do not tell how long a frame is meant to last.
REFERENCE_TIME IvfReader::FrameDuration() const {
    const std::optional<IvfFrame> first = ReadIvfFrame(*m_file, m_header.bytes);
    const std::optional<IvfFrame> second = first ? ReadIvfFrame(*m_file, first->End()) : std::nullopt;
    return second && second->ticks == first->ticks + 1 ? m_header.TimeOf(1) : 0;
}

std::vector<BYTE> IvfReader::FirstFrame() const {
    std::vector<BYTE> data;
    const std::optional<IvfFrame> first = ReadIvfFrame(*m_file, m_header.bytes);
    if (!first || !ReadFrame(*first, data)) {
        data.clear();
    }
    return data;
}

void IvfReader::StartOver() {
    m_position = m_header.bytes;
    m_lastDuration = m_header.TimeOf(1);
    m_isDamaged = false;
}

HRESULT IvfReader::DamageSoFar() const {
    return m_isDamaged ? HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT) : S_OK;
}

bool IvfReader::ReadNext(source::Packet& packet) {
    while (m_position < m_file->Size()) {
        const std::optional<IvfFrame> frame = ReadIvfFrame(*m_file, m_position);
        if (!frame) {
            m_isDamaged = true;
            return false;
        }
        m_position = frame->End();
        packet.stream = 0;
        if (ReadFrame(*frame, packet.data)) {
            SetTimes(*frame, packet); // reads on behind it
            packet.keyframe = IsKeyframe(m_header.codec, packet.data);
            return true;
        }
        m_isDamaged = true;
    }
    return false;
}

// False for one that is empty, too.
bool IvfReader::ReadFrame(const IvfFrame& frame, std::vector<BYTE>& data) const {
    if (frame.bytes == 0 || frame.bytes > source::kMaxPacketBytes) {
        return false;
    }
    source::ResizeUnkept(data, static_cast<size_t>(frame.bytes));
    return m_file->ReadAt(frame.start, data) == data.size();
}

void IvfReader::SetTimes(const IvfFrame& frame, source::Packet& packet) {
    packet.start = m_header.TimeOf(frame.ticks);
    const std::optional<IvfFrame> next = ReadIvfFrame(*m_file, frame.End());
    const REFERENCE_TIME end = next ? m_header.TimeOf(next->ticks) : 0;
    if (end > packet.start && end <= source::kMaxTime) {
        m_lastDuration = end - packet.start;
    }
    packet.stop = packet.start + m_lastDuration;
    packet.hasStop = true;
}

} // namespace av1
