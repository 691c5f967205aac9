#include "media/codec_description.h"

#include "media/codec_table.h"
#include "media/strict_codec_table.h"
#include "media/strict_description.h"
#include "media/track_type.h"

namespace media {

namespace {

constexpr UINT64 kSubtitleDurationNs = 3'000'000'000;

// As described so far when the type makes no track of that kind.
CodecDescription DescribeAs(INT32 trackType, const AM_MEDIA_TYPE& type, const CodecDescription& unsupported) {
    const CodecRow* const row = FindTrackType(type.majortype) == trackType ? FindCodecRow(type) : nullptr;
    CodecDescription description = unsupported;
    if (row == nullptr || !row->layout->describe(FormatBlock(type), description)) {
        return unsupported;
    }
    description.codecId = row->codecId;
    return description;
}

} // namespace

CodecDescription DescribeVideoCodec(const AM_MEDIA_TYPE& type) {
    CodecDescription description;
    description.lacing = false;
    return DescribeAs(kTrackTypeVideo, type, description);
}

CodecDescription DescribeAudioCodec(const AM_MEDIA_TYPE& type) {
    CodecDescription description;
    description.lacing = true;
    return DescribeAs(kTrackTypeAudio, type, description);
}

CodecDescription DescribeSubtitleCodec(const AM_MEDIA_TYPE& type) {
    CodecDescription description;
    description.defaultDurationNs = kSubtitleDurationNs;
    return DescribeAs(kTrackTypeSubtitle, type, description);
}

CodecDescription DescribeCodec(const AM_MEDIA_TYPE& type) {
    switch (FindTrackType(type.majortype)) {
    case kTrackTypeVideo:
        return DescribeVideoCodec(type);
    case kTrackTypeAudio:
        return DescribeAudioCodec(type);
    case kTrackTypeSubtitle:
        return DescribeSubtitleCodec(type);
    default:
        return {};
    }
}

CodecDescription DescribeStrictCodec(const AM_MEDIA_TYPE& type) {
    const CodecRow* const row = FindStrictCodecRow(type);
    return row == nullptr ? CodecDescription() : StrictDescriptionOf(*row, type);
}

std::string CodecIdOf(const AM_MEDIA_TYPE& type) {
    return DescribeCodec(type).codecId;
}

std::string StrictCodecIdOf(const AM_MEDIA_TYPE& type) {
    return DescribeStrictCodec(type).codecId;
}

} // namespace media
