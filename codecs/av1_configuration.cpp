#include "codecs/av1_configuration.h"

#include "codecs/av1_obu.h"
#include "codecs/av1_sequence_header.h"
#include "codecs/av1_units.h"

namespace codecs {

namespace {

constexpr uint8_t kMarkerAndVersion = 0x81;
constexpr uint8_t kPresentationDelayMask = 0x1f;

using Record = std::vector<uint8_t>;

void AppendHead(Record& record, const Av1SequenceHeader& header, uint8_t presentationDelay) {
    const Av1Color& color = header.color;
    const auto bit = [](bool isSet, unsigned shift) { return (isSet ? 1U : 0U) << shift; };
    record.push_back(kMarkerAndVersion);
    record.push_back(static_cast<uint8_t>(unsigned{header.profile} << 5 | header.level));
    record.push_back(static_cast<uint8_t>(unsigned{header.tier} << 7 | bit(color.bitDepth > 8, 6) |
                                          bit(color.bitDepth == 12, 5) | bit(color.isMonochrome, 4) |
                                          bit(color.subsamplingX, 3) | bit(color.subsamplingY, 2) |
                                          color.chromaSamplePosition));
    record.push_back(presentationDelay);
}

// What holds for the whole stream; other metadata belongs to its picture.
bool IsStaticMetadata(const Av1Obu& obu) {
    constexpr uint64_t kContentLightLevel = 1;
    constexpr uint64_t kMasteringMetadata = 2;
    const std::optional<Leb128> type =
        obu.type == Av1ObuType::Metadata ? ReadLeb128(obu.payload) : std::optional<Leb128>();
    return type && (type->value == kContentLightLevel || type->value == kMasteringMetadata);
}

std::vector<uint8_t> ConfigurationUnits(ByteView units) {
    std::vector<uint8_t> sequence;
    std::vector<uint8_t> metadata;
    Av1ObuReader reader(units);
    while (const std::optional<Av1Obu> obu = reader.Next()) {
        if (obu->type == Av1ObuType::SequenceHeader && sequence.empty()) {
            AppendSizedAv1Obu(sequence, *obu);
        } else if (IsStaticMetadata(*obu)) {
            AppendSizedAv1Obu(metadata, *obu);
        }
    }
    sequence.insert(sequence.end(), metadata.begin(), metadata.end());
    return sequence;
}

} // namespace

bool IsAv1Configuration(ByteView bytes) {
    return bytes.size() >= kAv1ConfigurationHeadBytes && bytes[0] == kMarkerAndVersion;
}

std::optional<Record> BuildAv1Configuration(ByteView bytes) {
    const bool isRecord = IsAv1Configuration(bytes);
    const ByteView units = isRecord ? bytes.subspan(kAv1ConfigurationHeadBytes) : bytes;
    const std::optional<Av1SequenceHeader> header = FindAv1SequenceHeader(bytes);
    if (!header || !AreAv1Obus(units)) {
        return std::nullopt;
    }
    const uint8_t delay = isRecord ? bytes[kAv1ConfigurationHeadBytes - 1] & kPresentationDelayMask : uint8_t{0};
    Record record;
    AppendHead(record, *header, delay);
    const Record kept = isRecord ? CleanAv1Units(units) : ConfigurationUnits(units);
    record.insert(record.end(), kept.begin(), kept.end());
    return record;
}

} // namespace codecs
