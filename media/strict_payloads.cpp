#include "media/strict_payloads.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "codecs/annexb_units.h"
#include "codecs/av1_units.h"
#include "codecs/prores_frame.h"
#include "codecs/webvtt_cue.h"
#include "dshow/media_subtypes.h"
#include "media/av1_stream.h"
#include "media/payload_conversion.h"
#include "media/plain_text.h"
#include "media/strict_codec_table.h"
#include "media/uncompressed_pictures.h"

namespace media {

namespace {

using InPlace = std::optional<std::span<BYTE>>;

// ---- Byte streams, AV1 and plain text
// ---------------------------------------------------------------------------------

InPlace UnitsInPlace(const AM_MEDIA_TYPE& /*type*/, std::span<BYTE> sample) {
    return codecs::ConvertAnnexBUnitsInPlace(sample);
}

std::vector<BYTE> UnitsOf(const AM_MEDIA_TYPE& /*type*/, ByteView sample) {
    return codecs::ConvertAnnexBUnits(sample);
}

InPlace Av1InPlace(const AM_MEDIA_TYPE& /*type*/, std::span<BYTE> sample) {
    return codecs::CleanAv1UnitsInPlace(sample);
}

std::vector<BYTE> Av1Of(const AM_MEDIA_TYPE& /*type*/, ByteView sample) {
    return codecs::CleanAv1Units(sample);
}

InPlace TextInPlace(const AM_MEDIA_TYPE& /*type*/, std::span<BYTE> sample) {
    const ByteView text = WithoutEnd(sample);
    return IsUtf8(text) ? std::optional(sample.first(text.size())) : std::nullopt;
}

std::vector<BYTE> TextOf(const AM_MEDIA_TYPE& /*type*/, ByteView sample) {
    return Utf8Of(sample);
}

// ---- What never needs more room ----------------------------------------------------------------------------------

template <InPlace (*Convert)(const AM_MEDIA_TYPE&, std::span<BYTE>)>
std::vector<BYTE> CopyThrough(const AM_MEDIA_TYPE& type, ByteView sample) {
    std::vector<BYTE> copy = CopyOf(sample);
    return CopyOf(*Convert(type, copy));
}

InPlace ProResInPlace(const AM_MEDIA_TYPE& /*type*/, std::span<BYTE> sample) {
    return codecs::HasProResHead(sample) ? sample.subspan(codecs::kProResHeadBytes) : sample;
}

InPlace RowsInPlace(const AM_MEDIA_TYPE& type, std::span<BYTE> sample) {
    return PutRowsInOrder(type, sample);
}

// Transport streams have an identifier and a stream number in front of the segments, and a mark behind them.
InPlace DvbInPlace(const AM_MEDIA_TYPE& /*type*/, std::span<BYTE> sample) {
    constexpr BYTE kHead[] = {0x20, 0x00, 0x0f}; // the last is the first segment's own
    constexpr size_t kForeignBytes = 2;
    constexpr BYTE kEndMark = 0xff;
    if (sample.size() < sizeof(kHead) || !std::equal(std::begin(kHead), std::end(kHead), sample.begin())) {
        return sample;
    }
    const auto segments = sample.subspan(kForeignBytes);
    return segments.back() == kEndMark ? segments.first(segments.size() - 1) : segments;
}

// ---- WebVTT ------------------------------------------------------------------------------------------------------

std::vector<BYTE> CueTextOf(const AM_MEDIA_TYPE& /*type*/, ByteView sample) {
    const std::string text = codecs::CueOfBoxes(sample).text;
    return {text.begin(), text.end()};
}

// The text lies somewhere inside the boxes.
InPlace CueTextInPlace(const AM_MEDIA_TYPE& type, std::span<BYTE> sample) {
    const std::vector<BYTE> text = CueTextOf(type, sample);
    std::copy(text.begin(), text.end(), sample.begin());
    return sample.first(text.size());
}

constexpr StrictPayload kUnits{UnitsInPlace, UnitsOf};
constexpr StrictPayload kAv1{Av1InPlace, Av1Of};
constexpr StrictPayload kPlainText{TextInPlace, TextOf};
constexpr StrictPayload kProRes{ProResInPlace, CopyThrough<ProResInPlace>};
constexpr StrictPayload kPictureRows{RowsInPlace, CopyThrough<RowsInPlace>};
constexpr StrictPayload kDvb{DvbInPlace, CopyThrough<DvbInPlace>};
constexpr StrictPayload kCueBoxes{CueTextInPlace, CueTextOf};

const StrictPayload* FindVideoPayload(const AM_MEDIA_TYPE& type) {
    if (NeedsAnnexBConversion(type)) {
        return &kUnits;
    }
    if (IsAv1(type)) {
        return &kAv1;
    }
    if (HasOtherRows(type)) {
        return &kPictureRows;
    }
    const CodecRow* const row = FindStrictCodecRow(type);
    return row != nullptr && std::string_view(row->codecId) == "V_PRORES" ? &kProRes : nullptr;
}

const StrictPayload* FindSubtitlePayload(const AM_MEDIA_TYPE& type) {
    if (type.subtype == mediasubtype::kDvbSubtitle) {
        return &kDvb;
    }
    return type.subtype == mediasubtype::kWebVttBoxes ? &kCueBoxes : nullptr;
}

} // namespace

const StrictPayload* FindStrictPayload(const AM_MEDIA_TYPE& type) {
    if (type.majortype == MEDIATYPE_Video) {
        return FindVideoPayload(type);
    }
    if (type.majortype == MEDIATYPE_Text) {
        return &kPlainText;
    }
    return type.majortype == mediatype::kSubtitle ? FindSubtitlePayload(type) : nullptr;
}

} // namespace media
