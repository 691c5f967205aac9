#include "media/vorbis_private.h"

namespace mkv {

namespace {

constexpr BYTE kPacketsMinusOne = 2;
constexpr BYTE kLacingContinues = 255;

void AppendLacedSize(std::vector<BYTE>& output, UINT32 size) {
    output.insert(output.end(), size / kLacingContinues, kLacingContinues);
    output.push_back(static_cast<BYTE>(size % kLacingContinues));
}

} // namespace

std::optional<std::vector<BYTE>> BuildVorbisPrivate(const FormatBlock& block, const VorbisFormat& format) {
    const UINT64 total = UINT64{format.headerSize[0]} + format.headerSize[1] + format.headerSize[2];
    const std::optional<ByteView> headers = block.Slice(sizeof(VorbisFormat), static_cast<size_t>(total));
    if (!headers) {
        return std::nullopt;
    }
    std::vector<BYTE> result{kPacketsMinusOne};
    AppendLacedSize(result, format.headerSize[0]);
    AppendLacedSize(result, format.headerSize[1]);
    result.insert(result.end(), headers->begin(), headers->end());
    return result;
}

} // namespace mkv
