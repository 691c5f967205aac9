// Media types whose format blocks are anything.
#include "fuzz/any_media_type.h"
#include "media/codec_description.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    if (size < fuzz::kChoiceBytes) {
        return 0;
    }
    const CMediaType type = fuzz::AnyMediaType(data, size);
    (void)media::CodecIdOf(type);
    (void)media::DescribeCodec(type);
    return 0;
}
