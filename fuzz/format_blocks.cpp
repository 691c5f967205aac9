// Media types whose format blocks are anything, described for both profiles; and samples of them for strict files.
#include "fuzz/any_media_type.h"
#include "fuzz/require.h"
#include "media/codec_description.h"
#include "media/payload_conversion.h"

namespace {

using fuzz::Require;

// Nothing that says nothing.
void CheckStrict(const media::CodecDescription& strict) {
    if (strict.codecId.empty()) {
        return;
    }
    Require(!strict.codecPrivate || !strict.codecPrivate->empty());
    Require(strict.defaultDurationNs != 0U);
    if (strict.video) {
        Require(strict.video->pixelWidth != 0 && strict.video->pixelHeight != 0);
        Require(!strict.video->display || (strict.video->display->width != 0 && strict.video->display->height != 0));
    }
    if (strict.audio) {
        Require(strict.audio->samplingFrequencyHz != 0 && strict.audio->channels != 0 && strict.audio->bitDepth != 0U);
    }
}

// Any bytes do for a sample; both ways lead to the same ones.
void CheckSample(const CMediaType& type, media::ByteView sample) {
    using Bytes = std::vector<BYTE>;
    const Bytes copy = media::ConvertStrictPayload(type, sample);
    Bytes room(sample.begin(), sample.end());
    if (const auto left = media::ConvertStrictInPlace(type, room)) {
        Require(Bytes(left->begin(), left->end()) == copy);
    }
    (void)media::StrictAdditionOf(type, sample);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    if (size < fuzz::kChoiceBytes) {
        return 0;
    }
    const CMediaType type = fuzz::AnyMediaType(data, size);
    (void)media::CodecIdOf(type);
    (void)media::DescribeCodec(type);
    CheckStrict(media::DescribeStrictCodec(type));
    CheckSample(type, {data, size});
    return 0;
}
