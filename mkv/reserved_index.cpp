#include "mkv/reserved_index.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <vector>

#include <ebml/IOCallback.h>

#include "dshow/ref_time.h"
#include "media/codec_description.h"
#include "media/track_type.h"
#include "mkv/codec_mapping.h"

namespace mkv {

namespace {

constexpr BYTE kVoidId = 0xec;
// Not longer than the head of any other element of the Segment's own level, so that such a one can begin there while
// this one still stands.
constexpr int kPlaceSizeBytes = 4;
constexpr size_t kIndexPlaceHeadBytes = CutRecording::IndexPlace::kHeadBytes;
static_assert(kIndexPlaceHeadBytes == 1 + kPlaceSizeBytes);
constexpr size_t kZeroBytes = size_t{64} << 10;

// A point for each keyframe of the video, as often as encoders make them; for each text; of sound alone one every two
// seconds. A point takes 25 bytes, with a duration 29, where the file is large.
constexpr UINT64 kPointBytes = 32;
constexpr UINT64 kOtherBytes = 64;
constexpr UINT64 kVideoPointsIn10S = 20;
constexpr UINT64 kIntraPointsIn10S = 600; // each picture is a keyframe
constexpr UINT64 kTextPointsIn10S = 10;
constexpr UINT64 kSoundPointsIn10S = 5;
constexpr REFERENCE_TIME kTenSeconds = 10 * kReferenceTimesPerSecond;

// What the library renders, in memory, where nothing is read or sought.
class CRenderedBytes final : public libebml::IOCallback {
  public:
    [[nodiscard]] const std::vector<BYTE>& bytes() const { return m_bytes; }

    // libebml::IOCallback
    uint32 read(void* /*buffer*/, size_t /*size*/) override { return 0; }
    void setFilePointer(int64 /*offset*/, libebml::seek_mode /*mode*/) override {}
    size_t write(const void* buffer, size_t size) override {
        const auto* const first = static_cast<const BYTE*>(buffer);
        m_bytes.insert(m_bytes.end(), first, first + size);
        return size;
    }
    uint64 getFilePointer() override { return m_bytes.size(); }
    void close() override {}

  private:
    std::vector<BYTE> m_bytes;
};

bool HasOnlyKeyframes(const AM_MEDIA_TYPE& type) {
    constexpr std::array<std::string_view, 4> kCodecs{"V_FFV1", "V_MJPEG", "V_PRORES", "V_UNCOMPRESSED"};
    return std::ranges::find(kCodecs, media::StrictCodecIdOf(type)) != kCodecs.end();
}

UINT64 PointsIn10S(const TrackList& tracks) {
    UINT64 video = 0;
    UINT64 texts = 0;
    for (const Track& track : tracks) {
        const INT32 kind = TrackTypeOf(track.type);
        if (kind == media::kTrackTypeVideo && video == 0) { // the first one has the points
            video = HasOnlyKeyframes(track.type) ? kIntraPointsIn10S : kVideoPointsIn10S;
        }
        texts += kind == media::kTrackTypeSubtitle ? kTextPointsIn10S : 0;
    }
    return texts + (video > 0 ? video : kSoundPointsIn10S);
}

std::vector<BYTE> VoidHead(UINT64 elementBytes, int sizeBytes) {
    const UINT64 dataBytes = elementBytes - 1 - static_cast<UINT64>(sizeBytes);
    std::vector<BYTE> head{kVoidId};
    for (int i = sizeBytes - 1; i >= 0; --i) {
        head.push_back(static_cast<BYTE>(dataBytes >> (8 * i)));
    }
    head[1] = static_cast<BYTE>(head[1] | (0x80 >> (sizeBytes - 1)));
    return head;
}

// Of what is left of the place, two bytes at least.
std::vector<BYTE> RestHead(UINT64 bytes) {
    constexpr int kLongSizeBytes = 8;
    return VoidHead(bytes, bytes > kLongSizeBytes ? kLongSizeBytes : 1);
}

} // namespace

UINT64 CReservedIndex::bytesFor(const records::FileOptions& options, const TrackList& tracks) {
    if (!options.isStrict() || (options.indexBytes == 0 && options.indexLength == 0)) {
        return 0;
    }
    UINT64 bytes = options.indexBytes;
    if (bytes == 0) {
        const auto tens = static_cast<UINT64>(options.indexLength / kTenSeconds) + 1;
        bytes = kOtherBytes + std::min(tens, records::kMaxIndexBytes) * PointsIn10S(tracks) * kPointBytes;
    }
    return std::clamp(bytes, kOtherBytes, records::kMaxIndexBytes);
}

void CReservedIndex::write(UINT64 bytes) {
    if (bytes == 0) {
        return;
    }
    const CGatheringIO::Place place = m_io.place();
    const std::vector<BYTE> head = VoidHead(bytes, kPlaceSizeBytes);
    m_io.write(head.data(), head.size());
    const std::vector<BYTE> zeros(kZeroBytes);
    for (UINT64 left = bytes - head.size(); left > 0;) {
        left -= m_io.write(zeros.data(), static_cast<size_t>(std::min<UINT64>(left, zeros.size())));
    }
    m_io.flush();
    if (m_io.takeLost()) {
        m_io.returnTo(place);
        return;
    }
    m_position = place.position;
    m_bytes = bytes;
}

void CReservedIndex::resume(const CutRecording::IndexPlace& place) {
    m_position = place.position;
    m_bytes = place.bytes;
    m_isFilled = place.isFilled;
}

bool CReservedIndex::takes(UINT64 bytes) const {
    return bytes == m_bytes || bytes + 1 < m_bytes; // no element is shorter than two bytes
}

bool CReservedIndex::fill(CMkvCues& cues, CFilePatcher& patcher) {
    CRenderedBytes rendered;
    cues.Render(rendered);
    const std::vector<BYTE>& bytes = rendered.bytes();
    if (!takes(bytes.size())) {
        return false;
    }
    const bool isBehindHead = patcher.arrives([&] {
        m_io.moveTo(m_position + kIndexPlaceHeadBytes);
        m_io.write(bytes.data() + kIndexPlaceHeadBytes, bytes.size() - kIndexPlaceHeadBytes);
        if (bytes.size() < m_bytes) {
            const std::vector<BYTE> rest = RestHead(m_bytes - bytes.size());
            m_io.write(rest.data(), rest.size());
        }
    });
    return isBehindHead && patcher.arrives([&] {
        m_io.moveTo(m_position);
        m_io.write(bytes.data(), kIndexPlaceHeadBytes);
    });
}

void CReservedIndex::empty(CFilePatcher& patcher) {
    if (m_isFilled) {
        m_isFilled = !patcher.arrives([&] {
            const std::vector<BYTE> head = VoidHead(m_bytes, kPlaceSizeBytes);
            m_io.moveTo(m_position);
            m_io.write(head.data(), head.size());
        });
    }
}

} // namespace mkv
