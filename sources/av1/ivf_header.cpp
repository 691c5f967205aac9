#include "sources/av1/ivf_header.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "dshow/ref_time.h"
#include "sources/base/limits.h"

namespace av1 {

namespace {

constexpr std::string_view kSignature = "DKIF";
constexpr size_t kHeadBytes = 32;
constexpr size_t kHeadBytesOffset = 6;
constexpr size_t kCodecOffset = 8;
constexpr size_t kWidthOffset = 12;
constexpr size_t kHeightOffset = 14;
constexpr size_t kRateOffset = 16;
constexpr size_t kScaleOffset = 20;
constexpr size_t kTicksOffset = 4; // of a frame's head

constexpr UINT64 kSecond{kReferenceTimesPerSecond};
constexpr UINT64 kMaxSeconds = UINT64{source::kMaxTime} / kSecond;

UINT64 Number(std::span<const BYTE> bytes, size_t offset, size_t size) {
    UINT64 value = 0;
    for (size_t i = size; i-- > 0;) {
        value = value << 8 | bytes[offset + i];
    }
    return value;
}

bool IsText(std::span<const BYTE> bytes, size_t offset, std::string_view text) {
    return std::equal(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset),
                      [](char a, BYTE b) { return static_cast<BYTE>(a) == b; });
}

std::optional<IvfCodec> CodecIn(std::span<const BYTE> head) {
    if (IsText(head, kCodecOffset, "AV01")) {
        return IvfCodec::Av1;
    }
    if (IsText(head, kCodecOffset, "VP80")) {
        return IvfCodec::Vp8;
    }
    return IsText(head, kCodecOffset, "VP90") ? std::optional(IvfCodec::Vp9) : std::nullopt;
}

} // namespace

// Whole seconds first, so that the product fits.
REFERENCE_TIME IvfHeader::TimeOf(UINT64 ticks) const {
    if (ticks > UINT64_MAX / scale || ticks * scale / rate > kMaxSeconds) {
        return source::kMaxTime + 1;
    }
    const UINT64 units = ticks * scale;
    return static_cast<REFERENCE_TIME>(units / rate * kSecond + units % rate * kSecond / rate);
}

std::optional<IvfHeader> ReadIvfHeader(const source::ByteSource& file) {
    std::array<BYTE, kHeadBytes> head{};
    if (file.ReadAt(0, head) != head.size() || !IsText(head, 0, kSignature)) {
        return std::nullopt;
    }
    const std::optional<IvfCodec> codec = CodecIn(head);
    IvfHeader header;
    header.bytes = Number(head, kHeadBytesOffset, 2);
    header.width = static_cast<UINT32>(Number(head, kWidthOffset, 2));
    header.height = static_cast<UINT32>(Number(head, kHeightOffset, 2));
    header.rate = static_cast<UINT32>(Number(head, kRateOffset, 4));
    header.scale = static_cast<UINT32>(Number(head, kScaleOffset, 4));
    if (!codec || header.bytes < kHeadBytes || header.rate == 0 || header.scale == 0) {
        return std::nullopt;
    }
    header.codec = *codec;
    return header;
}

std::optional<IvfFrame> ReadIvfFrame(const source::ByteSource& file, UINT64 position) {
    std::array<BYTE, kIvfFrameHeadBytes> head{};
    if (file.ReadAt(position, head) != head.size()) {
        return std::nullopt;
    }
    IvfFrame frame;
    frame.start = position + kIvfFrameHeadBytes;
    frame.bytes = Number(head, 0, 4);
    frame.ticks = Number(head, kTicksOffset, 8);
    return frame.End() <= file.Size() ? std::optional(frame) : std::nullopt;
}

} // namespace av1
