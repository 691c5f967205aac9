#include "sources/av1/obu_reader.h"

#include "codecs/av1_units.h"
#include "sources/av1/picture_type.h"
#include "sources/base/reused_bytes.h"

namespace av1 {

namespace {

constexpr UINT64 kMostSecondsAPicture = 1000;
constexpr UINT32 kMostPicturesASecond = 10'000;

// What the header tells, where it does: as sane a rate as one that is asked for.
std::optional<annexb::FrameRate> RateOf(const codecs::Av1SequenceHeader& header) {
    const bool isTold = header.frameTicks > 0 && header.frameTicks <= UINT32_MAX && header.ticksPerSecond > 0;
    const bool isSane = header.frameTicks / kMostSecondsAPicture <= header.ticksPerSecond &&
                        header.ticksPerSecond / kMostPicturesASecond <= header.frameTicks;
    return isTold && isSane
               ? std::optional(annexb::FrameRate{header.ticksPerSecond, static_cast<UINT32>(header.frameTicks)})
               : std::nullopt;
}

} // namespace

ObuReader::ObuReader(std::unique_ptr<source::ByteSource> file, StreamForm form, const annexb::FrameRate& rate)
    : m_file(std::move(file)), m_form(form), m_rate(rate) {
    Describe();
    StartOver();
}

void ObuReader::Describe() {
    std::vector<BYTE> first;
    if (!ReadUnit(first)) {
        return;
    }
    const std::optional<codecs::Av1SequenceHeader> header = codecs::FindAv1SequenceHeader(first);
    if (!header) {
        return;
    }
    m_hasHeader = true;
    m_rate = RateOf(*header).value_or(m_rate);
    media::Picture picture;
    picture.frameDuration = m_rate.TimeOf(1);
    source::StreamDescription description;
    description.name = OLESTR("Video");
    description.types.push_back(Av1Type(picture, first));
    m_streams.push_back(std::move(description));
}

void ObuReader::StartOver() {
    m_position = 0;
    m_number = 0;
    m_isDamaged = false;
}

HRESULT ObuReader::DamageSoFar() const {
    return m_isDamaged ? HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT) : S_OK;
}

bool ObuReader::ReadNext(source::Packet& packet) {
    if (m_isDamaged || m_position >= m_file->Size()) {
        return false;
    }
    if (!ReadUnit(packet.data)) {
        m_isDamaged = true;
        return false;
    }
    packet.stream = 0;
    packet.start = m_rate.TimeOf(m_number);
    packet.stop = m_rate.TimeOf(m_number + 1);
    packet.hasStop = true;
    packet.keyframe = codecs::RandomAccessOfAv1(packet.data) == codecs::Av1RandomAccess::Yes;
    ++m_number;
    return true;
}

bool ObuReader::ReadUnit(std::vector<BYTE>& data) {
    const std::optional<TemporalUnit> unit = FindTemporalUnit(*m_file, m_form, m_position);
    if (!unit) {
        return false;
    }
    m_position = unit->end;
    source::ResizeUnkept(data, static_cast<size_t>(unit->end - unit->start));
    if (m_file->ReadAt(unit->start, data) != data.size()) {
        return false;
    }
    if (m_form == StreamForm::AnnexB) {
        data = WithSizes(data);
    }
    return !data.empty();
}

} // namespace av1
