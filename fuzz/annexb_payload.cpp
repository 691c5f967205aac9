// Samples of H.264 and H.265 byte streams as the payloads of blocks: copied, and in place; and the searches beneath.
#include <algorithm>
#include <optional>

#include "codecs/annexb_converter.h"
#include "codecs/nal_unit.h"
#include "codecs/unit_lengths.h"
#include "codecs/zero_pair_search.h"
#include "dshow/media_subtypes.h"
#include "dshow/media_type.h"
#include "fuzz/plain_units.h"
#include "fuzz/require.h"
#include "media/payload_conversion.h"

namespace {

using fuzz::Require;
using Bytes = std::vector<std::uint8_t>;

CMediaType ByteStreamType() {
    CMediaType type(&MEDIATYPE_Video);
    type.formattype = FORMAT_MPEG2Video;
    type.subtype = mediasubtype::kH264AnnexB;
    return type;
}

bool BeginsWithoutStartCode(codecs::ByteView sample) {
    const auto begin = std::search(sample.begin(), sample.end(), codecs::kStartCode.begin(), codecs::kStartCode.end());
    const bool hasBytesInFront = std::any_of(sample.begin(), begin, [](std::uint8_t byte) { return byte != 0; });
    return hasBytesInFront || begin == sample.end();
}

void CheckPayload(codecs::ByteView sample, const Bytes& expected) {
    static const CMediaType type = ByteStreamType();
    Require(media::NeedsAnnexBConversion(type));
    Require(media::ConvertPayload(type, sample) == expected);
    Bytes inPlace = fuzz::ExactCopy(sample);
    if (const auto payload = media::ConvertAnnexBInPlace(inPlace)) {
        Require(Bytes(payload->begin(), payload->end()) == expected);
    } else {
        Require(codecs::ByteView(inPlace).size() == sample.size() &&
                std::equal(sample.begin(), sample.end(), inPlace.begin()));
        Require(BeginsWithoutStartCode(sample)); // the only reason not to: there is no room for a length
    }
}

void CheckScanner(codecs::ByteView stream, size_t startCodeLength) {
    codecs::NALUnitScanner scanner(stream, startCodeLength);
    for (const Bytes& unit : fuzz::PlainUnits(stream, startCodeLength)) {
        const auto found = scanner.Next();
        Require(found && std::equal(unit.begin(), unit.end(), found->Payload().begin(), found->Payload().end()));
    }
    Require(!scanner.Next());
}

void CheckZeroSearch(codecs::ByteView bytes) {
    size_t expected = bytes.size();
    for (size_t i = bytes.size(); i-- > 0;) {
        if (bytes[i] == 0 && (i + 1 == bytes.size() || bytes[i + 1] == 0)) {
            expected = i;
        }
        Require(codecs::FindZeros(bytes, i) == expected);
    }
}

// What has four-byte lengths keeps its bytes when they are widened to four.
void CheckWidening(const Bytes& payload) {
    const auto wide = codecs::WidenLengths(payload, codecs::kSampleLengthSizeBytes, payload.size());
    Require(wide && *wide == payload);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    constexpr size_t kMostSearched = 2048; // from each place
    const Bytes sample = fuzz::ExactCopy({data, size});
    const Bytes expected = fuzz::WithLengths(fuzz::PlainUnits(sample, 4), 4);
    CheckPayload(sample, expected);
    CheckWidening(expected);
    CheckScanner(sample, 3);
    Require(codecs::ConvertAnnexB(sample, 4, 2) == fuzz::WithLengths(fuzz::PlainUnits(sample, 4), 2));
    (void)codecs::WidenLengths(sample, 1 + size % 3, 4 * size);
    if (size <= kMostSearched) {
        CheckZeroSearch(sample);
    }
    return 0;
}
