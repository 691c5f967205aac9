#include "media/subtitle_layouts.h"

#include "media/format_builder.h"

namespace media {

namespace {

bool DescribeText(const FormatBlock& /*block*/, CodecDescription& /*description*/) {
    return true;
}

std::optional<CMediaType> TextTypeOf(const CodecRow& row, const TrackFacts& /*track*/) {
    return TypeWithFormat(*row.major, GUID_NULL, FORMAT_None, {});
}

// The block starts with the offset of the codec header; an offset at the block's end means that there is none, and so
// does a type without a block.
bool DescribeSubtitleInfo(const FormatBlock& block, CodecDescription& description) {
    if (block.Bytes().empty()) {
        return true;
    }
    const auto offset = block.Read<DWORD>();
    const auto header = block.From(offset.value_or(0));
    if (!offset || !header) {
        return false;
    }
    if (!header->empty()) {
        description.codecPrivate = CopyOf(*header);
    }
    return true;
}

std::optional<CMediaType> SubtitleInfoTypeOf(const CodecRow& row, const TrackFacts& track) {
    return SubtitleType(*row.subtype, track.language.c_str(), track.codecPrivate);
}

} // namespace

constexpr CodecLayout kTextLayout{.describe = DescribeText, .typeOf = TextTypeOf};
constexpr CodecLayout kOneWaySubtitleLayout{.describe = DescribeSubtitleInfo};
constexpr CodecLayout kSubtitleInfoLayout{.describe = DescribeSubtitleInfo, .typeOf = SubtitleInfoTypeOf};

} // namespace media
