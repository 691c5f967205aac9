#include "sources/annexb/annexb_reader.h"

#include <algorithm>

#include "codecs/annexb_converter.h"
#include "dshow/media_subtypes.h"
#include "media/format_builder.h"
#include "sources/annexb/unit_scanner.h"

namespace annexb {

namespace {

CMediaType TypeOf(const PictureIndex& index, Codec codec, const FrameRate& rate) {
    media::Picture picture;
    picture.width = static_cast<LONG>(index.shape.width);
    picture.height = static_cast<LONG>(index.shape.height);
    picture.aspectX = index.shape.aspectX;
    picture.aspectY = index.shape.aspectY;
    picture.frameDuration = rate.TimeOf(1);
    const GUID& subtype = codec == Codec::Avc ? mediasubtype::kH264AnnexB : mediasubtype::kHevcAnnexB;
    return media::Mpeg2VideoType(subtype, picture, index.parameterSets, {index.profile, index.level, 0});
}

} // namespace

AnnexBReader::AnnexBReader(std::unique_ptr<source::ByteSource> bytes, PictureIndex index, Codec codec,
                           const FrameRate& rate)
    : m_bytes(std::move(bytes)), m_index(std::move(index)), m_rate(rate) {
    source::StreamDescription description;
    description.name = OLESTR("Video");
    description.types.push_back(TypeOf(m_index, codec, rate));
    m_streams.push_back(std::move(description));
}

void AnnexBReader::StartOver() {
    m_next = 0;
    m_lostPictures = false;
}

HRESULT AnnexBReader::DamageSoFar() const {
    return m_index.isDamaged || m_lostPictures ? HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT) : S_OK;
}

bool AnnexBReader::ReadNext(source::Packet& packet) {
    while (m_next < m_index.pictures.size()) {
        const CodedPicture& picture = m_index.pictures[m_next++];
        packet.stream = 0;
        packet.start = m_rate.TimeOf(picture.shown);
        packet.stop = m_rate.TimeOf(picture.shown + 1);
        packet.hasStop = true;
        packet.keyframe = picture.keyframe;
        if (ReadPicture(picture, packet.data)) {
            return true;
        }
        m_lostPictures = true;
    }
    return false;
}

bool AnnexBReader::ReadPicture(const CodedPicture& picture, std::vector<BYTE>& data) const {
    data.clear();
    if (picture.end - picture.start > source::kMaxPacketBytes) {
        return false;
    }
    UnitScanner scanner(*m_bytes, picture.start, picture.end);
    while (const std::optional<UnitExtent> unit = scanner.Next()) {
        data.insert(data.end(), codecs::kStartCode.begin(), codecs::kStartCode.end());
        const size_t before = data.size();
        const auto size = static_cast<size_t>(unit->Size());
        data.resize(before + size);
        if (m_bytes->ReadAt(unit->start, std::span(data).subspan(before)) != size) {
            return false;
        }
    }
    return !data.empty();
}

} // namespace annexb
