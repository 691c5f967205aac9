#include "bench/load.h"

#include <algorithm>
#include <random>

#include "dshow/media_subtypes.h"
#include "dshow/ref_time.h"
#include "tests/support/media_types.h"

namespace bench {

namespace {

constexpr size_t kSmallPacketBytes = 400;
constexpr size_t kLargePacketBytes = 65536;
constexpr INT64 kAudioPacketMs = 10;
constexpr INT64 kVideoFrameMs = 40;
constexpr UINT64 kFramesPerKeyframe = 25; // a second
constexpr DWORD kAvcHighProfile = 100;
constexpr DWORD kAvcLevel31 = 31;
constexpr BYTE kHighestEscapedByte = 3; // what may not follow two zeros inside a NAL unit

// Looks like compressed data, and is the same in every run. No start code appears in it by chance.
std::vector<BYTE> NoiseOf(size_t bytes) {
    std::mt19937 noise; // NOLINT: the fixed seed is the point
    std::vector<BYTE> data(bytes);
    size_t zeros = 0;
    for (BYTE& byte : data) {
        byte = static_cast<BYTE>(noise());
        if (zeros >= 2 && byte <= kHighestEscapedByte) {
            byte = static_cast<BYTE>(byte + kHighestEscapedByte + 1);
        }
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    return data;
}

// An SPS and a PPS as a byte stream.
std::vector<BYTE> ParameterSets() {
    return {0,    0,    0,    1, 0x67, 0x64, 0x00, 0x1f, 0xac, 0xd9, 0x40, 0x50,
            0x05, 0xbb, 0x01, 0, 0,    0,    1,    0x68, 0xee, 0x3c, 0x80};
}

std::vector<BYTE> ByteStreamFrame() {
    std::vector<BYTE> frame = NoiseOf(kLargePacketBytes);
    constexpr BYTE kStartOfUnit[] = {0, 0, 0, 1, 0x65};
    std::copy(std::begin(kStartOfUnit), std::end(kStartOfUnit), frame.begin());
    return frame;
}

} // namespace

Load SmallAudio(size_t inputs, UINT64 packetsPerInput) {
    Load load;
    load.name = "audio 400 B";
    load.type = test_support::WaveType(mediasubtype::kPcm);
    load.payload = NoiseOf(kSmallPacketBytes);
    load.inputs = inputs;
    load.packetsPerInput = packetsPerInput;
    load.packetTicks = kAudioPacketMs * kReferenceTimesPerMs;
    return load;
}

Load LargeVideo(size_t inputs, UINT64 packetsPerInput) {
    Load load;
    load.name = "video 64 KiB";
    load.type = test_support::VideoInfoType(SubtypeFromFourCC('M', 'J', 'P', 'G'));
    load.payload = NoiseOf(kLargePacketBytes);
    load.inputs = inputs;
    load.packetsPerInput = packetsPerInput;
    load.packetTicks = kVideoFrameMs * kReferenceTimesPerMs;
    load.keyframeEvery = kFramesPerKeyframe;
    return load;
}

Load LargeByteStreamVideo(size_t inputs, UINT64 packetsPerInput) {
    Load load = LargeVideo(inputs, packetsPerInput);
    load.name = "H.264 byte stream 64 KiB";
    load.type =
        test_support::Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, ParameterSets(), kAvcHighProfile, kAvcLevel31);
    load.payload = ByteStreamFrame();
    return load;
}

} // namespace bench
