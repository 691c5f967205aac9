// The media types of the pictures that this folder reads.
#pragma once

#include "codecs/av1_configuration.h"
#include "codecs/av1_sequence_header.h"
#include "dshow/media_subtypes.h"
#include "media/format_builder.h"

namespace av1 {

// With square pixels; the extra bytes follow the structure.
[[nodiscard]] inline CMediaType TypeOfPicture(const GUID& subtype, media::Picture picture, media::ByteView extra) {
    picture.aspectX = static_cast<DWORD>(picture.width);
    picture.aspectY = static_cast<DWORD>(picture.height);
    return media::VideoInfo2Type(subtype, picture, BitmapHeader(picture, subtype.Data1), extra);
}

// With the configuration record of the first temporal unit, if it has one; its size stands for one that is not told.
[[nodiscard]] inline CMediaType Av1Type(media::Picture picture, codecs::ByteView firstUnit) {
    const std::optional<codecs::Av1SequenceHeader> header = codecs::FindAv1SequenceHeader(firstUnit);
    if (header && (picture.width == 0 || picture.height == 0)) {
        picture.width = static_cast<LONG>(header->maxWidth);
        picture.height = static_cast<LONG>(header->maxHeight);
    }
    return TypeOfPicture(mediasubtype::kAv01, picture,
                         codecs::BuildAv1Configuration(firstUnit).value_or(std::vector<BYTE>()));
}

} // namespace av1
