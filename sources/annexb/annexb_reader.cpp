#include "sources/annexb/annexb_reader.h"

#include <algorithm>

#include "codecs/annexb_converter.h"
#include "dshow/media_subtypes.h"
#include "media/format_builder.h"
#include "sources/base/reused_bytes.h"

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

// A picture begins with a start code of three bytes; the zero in front makes it one of four.
bool AnnexBReader::ReadPicture(const CodedPicture& picture, std::vector<BYTE>& data) {
    if (picture.end - picture.start > source::kMaxPacketBytes) {
        return false;
    }
    const auto size = static_cast<size_t>(picture.end - picture.start);
    source::ResizeUnkept(data, size + 1);
    data[0] = 0;
    if (m_bytes->ReadAt(picture.start, std::span(data).subspan(1)) != size) {
        return false;
    }
    if (!picture.isOneUnit) {
        LengthenStartCodes(data);
    }
    return !data.empty();
}

// Nothing moves where they are four bytes long already.
void AnnexBReader::LengthenStartCodes(std::vector<BYTE>& data) {
    m_units.clear();
    size_t total = 0;
    bool isInPlace = true;
    UnitScanner scanner(data);
    while (const std::optional<UnitExtent> unit = scanner.Next()) {
        total += codecs::kStartCode.size();
        isInPlace = isInPlace && unit->start == total;
        total += static_cast<size_t>(unit->Size());
        m_units.push_back(*unit);
    }
    if (isInPlace) {
        data.resize(total);
        return;
    }
    source::ResizeUnkept(m_rewritten, total);
    auto end = m_rewritten.begin();
    for (const UnitExtent& unit : m_units) {
        end = std::copy(codecs::kStartCode.begin(), codecs::kStartCode.end(), end);
        end = std::copy_n(data.begin() + static_cast<std::ptrdiff_t>(unit.start), unit.Size(), end);
    }
    data.swap(m_rewritten);
}

} // namespace annexb
