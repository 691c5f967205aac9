// Media types whose format blocks are anything, described for both profiles.
#include "fuzz/any_media_type.h"
#include "fuzz/require.h"
#include "media/codec_description.h"

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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    if (size < fuzz::kChoiceBytes) {
        return 0;
    }
    const CMediaType type = fuzz::AnyMediaType(data, size);
    (void)media::CodecIdOf(type);
    (void)media::DescribeCodec(type);
    CheckStrict(media::DescribeStrictCodec(type));
    return 0;
}
