#include "media/strict_description.h"

#include "media/described_colour.h"
#include "media/mpeg_video_layouts.h"
#include "media/strict_audio_codecs.h"
#include "media/strict_fields.h"
#include "media/strict_subtitle_codecs.h"
#include "media/strict_video_codecs.h"
#include "media/track_type.h"

namespace media {

namespace {

// Of every MPEG-2 block the sequence header is wanted as it is.
const CodecLayout& LayoutFor(const CodecRow& row) {
    const bool hasSequenceHeader = row.format != nullptr && *row.format == FORMAT_MPEG2Video;
    return hasSequenceHeader ? kMpeg2Layout : *row.layout;
}

const StrictCodec* FindStrictCodec(INT32 trackType, std::string_view codecId) {
    switch (trackType) {
    case kTrackTypeVideo:
        return FindStrictVideoCodec(codecId);
    case kTrackTypeAudio:
        return FindStrictAudioCodec(codecId);
    default:
        return FindStrictSubtitleCodec(codecId);
    }
}

bool RefineCodec(const CodecRow& row, const AM_MEDIA_TYPE& type, CodecDescription& description) {
    const StrictCodec* const codec = FindStrictCodec(FindTrackType(type.majortype), row.codecId);
    return codec == nullptr || codec->refine(row, FormatBlock(type), description);
}

bool RefineFields(const AM_MEDIA_TYPE& type, CodecDescription& description) {
    if (description.codecPrivate && description.codecPrivate->empty()) {
        description.codecPrivate.reset();
    }
    if (description.video) {
        return RefinePicture(type, description);
    }
    return !description.audio || RefineSound(description);
}

} // namespace

CodecDescription StrictDescriptionOf(const CodecRow& row, const AM_MEDIA_TYPE& type) {
    CodecDescription description;
    if (!LayoutFor(row).describe(FormatBlock(type), description)) {
        return {};
    }
    description.codecId = row.codecId;
    description.lacing = false; // a block holds one frame
    if (!RefineCodec(row, type, description) || !RefineFields(type, description)) {
        return {};
    }
    if (description.video) {
        DescribeColour(type, description);
    }
    return description;
}

} // namespace media
