#include "media/strict_description.h"

#include <algorithm>
#include <iterator>

#include "dshow/media_subtypes.h"
#include "media/mpeg_video_layouts.h"
#include "media/strict_audio_codecs.h"
#include "media/strict_fields.h"
#include "media/strict_subtitle_codecs.h"
#include "media/strict_video_codecs.h"
#include "media/track_type.h"

namespace media {

namespace {

bool DescribePictureAlone(const FormatBlock& /*block*/, CodecDescription& description) {
    description.video = VideoDescription();
    return true;
}

constexpr CodecLayout kPictureLayout{.describe = DescribePictureAlone};

// What the table knows in one of the two plain blocks only: samples are the same in both.
constexpr CodecRow kRowsOfBothBlocks[] = {
    {&MEDIATYPE_Video, &mediasubtype::kVp8, &FORMAT_VideoInfo2, Acceptance::AsMapped, "V_VP8", &kPictureLayout},
    {&MEDIATYPE_Video, &mediasubtype::kVp9, &FORMAT_VideoInfo, Acceptance::AsMapped, "V_VP9", &kPictureLayout},
};

const CodecRow& RowFor(const CodecRow& row, const AM_MEDIA_TYPE& type) {
    const auto matches = [&type](const CodecRow& other) { return other.Matches(type); };
    const auto other = std::ranges::find_if(kRowsOfBothBlocks, matches);
    return other == std::end(kRowsOfBothBlocks) ? row : *other;
}

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

CodecDescription StrictDescriptionOf(const CodecRow& tableRow, const AM_MEDIA_TYPE& type) {
    const CodecRow& row = RowFor(tableRow, type);
    CodecDescription description;
    if (!LayoutFor(row).describe(FormatBlock(type), description)) {
        return {};
    }
    description.codecId = row.codecId;
    description.lacing = false; // a block holds one frame
    return RefineCodec(row, type, description) && RefineFields(type, description) ? description : CodecDescription();
}

} // namespace media
