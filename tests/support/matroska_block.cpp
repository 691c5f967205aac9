// Blocks and their lacing (RFC 9559, section 10).
#include "tests/support/matroska_layout.h"

namespace test_support {

namespace {

constexpr size_t kTimeAndFlagsBytes = 3;
constexpr unsigned kLacingMask = 0x06;
constexpr unsigned kNoLacing = 0x00;
constexpr unsigned kXiphLacing = 0x02;
constexpr unsigned kFixedLacing = 0x04;
constexpr int64_t kMaxFrameBytes = int64_t{1} << 56; // what a size field can say
constexpr uint8_t kXiphContinues = 0xff;

// All sizes but the last frame's, which takes what is left. Each reader consumes the front of `data`.
std::optional<std::vector<uint64_t>> ReadXiphSizes(ByteView& data, size_t count) {
    std::vector<uint64_t> sizes;
    while (sizes.size() < count) {
        uint64_t size = 0;
        uint8_t byte = kXiphContinues;
        while (byte == kXiphContinues) {
            if (data.empty()) {
                return std::nullopt;
            }
            byte = data[0];
            data = data.subspan(1);
            size += byte;
        }
        sizes.push_back(size);
    }
    return sizes;
}

std::optional<std::vector<uint64_t>> ReadEbmlLacedSizes(ByteView& data, size_t count) {
    std::vector<uint64_t> sizes;
    while (sizes.size() < count) {
        const std::optional<EbmlNumber> number = ReadEbmlSize(data);
        if (!number) {
            return std::nullopt;
        }
        data = data.subspan(number->length);
        if (sizes.empty()) {
            sizes.push_back(number->value);
            continue;
        }
        // A difference to the frame before, stored with its middle as zero.
        const int64_t zero = (int64_t{1} << (7 * number->length - 1)) - 1;
        const int64_t difference = static_cast<int64_t>(number->value) - zero;
        const int64_t size = static_cast<int64_t>(sizes.back()) + difference;
        if (size < 0 || size > kMaxFrameBytes) {
            return std::nullopt;
        }
        sizes.push_back(static_cast<uint64_t>(size));
    }
    return sizes;
}

std::optional<std::vector<uint64_t>> ReadLacedSizes(unsigned lacing, ByteView& data, size_t frames) {
    if (lacing == kXiphLacing) {
        return ReadXiphSizes(data, frames - 1);
    }
    if (lacing == kFixedLacing) {
        if (data.size() % frames != 0) {
            return std::nullopt;
        }
        return std::vector<uint64_t>(frames - 1, data.size() / frames);
    }
    return ReadEbmlLacedSizes(data, frames - 1);
}

bool SplitFrames(unsigned lacing, ByteView data, std::vector<ByteView>& frames) {
    if (data.empty()) {
        return false;
    }
    const size_t count = size_t{data[0]} + 1;
    data = data.subspan(1);
    const std::optional<std::vector<uint64_t>> sizes = ReadLacedSizes(lacing, data, count);
    if (!sizes) {
        return false;
    }
    for (const uint64_t size : *sizes) {
        if (size > data.size()) {
            return false;
        }
        frames.push_back(data.first(static_cast<size_t>(size)));
        data = data.subspan(static_cast<size_t>(size));
    }
    frames.push_back(data);
    return true;
}

} // namespace

std::optional<LayoutBlock> ReadBlock(ByteView data, std::string& lacingProblem) {
    const std::optional<EbmlNumber> track = ReadEbmlSize(data);
    if (!track || data.size() < track->length + kTimeAndFlagsBytes) {
        return std::nullopt;
    }
    LayoutBlock block;
    block.track = track->value;
    data = data.subspan(track->length);
    block.relativeTime = static_cast<int16_t>(static_cast<uint16_t>(data[0] << 8 | data[1]));
    block.flags = data[2];
    data = data.subspan(kTimeAndFlagsBytes);
    const unsigned lacing = block.flags & kLacingMask;
    if (lacing == kNoLacing) {
        block.frames.push_back(data);
    } else if (!SplitFrames(lacing, data, block.frames)) {
        lacingProblem = "the frames of a laced block cannot be told apart";
    }
    return block;
}

} // namespace test_support
