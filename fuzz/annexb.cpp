// H.264 and H.265 byte streams: the same bytes as both.
#include "fuzz/read_all.h"
#include "sources/annexb/annexb_reader.h"

namespace {

void Read(annexb::Codec codec, const std::uint8_t* data, size_t size) {
    auto bytes = fuzz::SourceOf(data, size);
    annexb::PictureIndex index = codec == annexb::Codec::Avc ? annexb::IndexAvc(*bytes) : annexb::IndexHevc(*bytes);
    if (!index.pictures.empty()) {
        annexb::AnnexBReader reader(std::move(bytes), std::move(index), codec, annexb::FrameRate());
        fuzz::ReadAll(&reader, size);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    Read(annexb::Codec::Avc, data, size);
    Read(annexb::Codec::Hevc, data, size);
    return 0;
}
