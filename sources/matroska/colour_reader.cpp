#include "sources/matroska/colour_reader.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>
#include <vector>

#include <matroska/KaxSemantic.h>

namespace matroska {

namespace {

using namespace libmatroska;
using media::Colour;

// In the order of the lists.
const std::array<UINT32, Colour::kNumbers>& NumberIds() {
    static const std::array<UINT32, Colour::kNumbers> ids{
        IdOf<KaxVideoColourMatrix>(),      IdOf<KaxVideoBitsPerChannel>(),
        IdOf<KaxVideoChromaSubsampHorz>(), IdOf<KaxVideoChromaSubsampVert>(),
        IdOf<KaxVideoCbSubsampHorz>(),     IdOf<KaxVideoCbSubsampVert>(),
        IdOf<KaxVideoChromaSitHorz>(),     IdOf<KaxVideoChromaSitVert>(),
        IdOf<KaxVideoColourRange>(),       IdOf<KaxVideoColourTransferCharacter>(),
        IdOf<KaxVideoColourPrimaries>(),   IdOf<KaxVideoColourMaxCLL>(),
        IdOf<KaxVideoColourMaxFALL>()};
    return ids;
}

const std::array<UINT32, Colour::kMasterings>& MasteringIds() {
    static const std::array<UINT32, Colour::kMasterings> ids{
        IdOf<KaxVideoRChromaX>(),          IdOf<KaxVideoRChromaY>(),          IdOf<KaxVideoGChromaX>(),
        IdOf<KaxVideoGChromaY>(),          IdOf<KaxVideoBChromaX>(),          IdOf<KaxVideoBChromaY>(),
        IdOf<KaxVideoWhitePointChromaX>(), IdOf<KaxVideoWhitePointChromaY>(), IdOf<KaxVideoLuminanceMax>(),
        IdOf<KaxVideoLuminanceMin>()};
    return ids;
}

void ReadMastering(const EbmlReader& reader, const Element& element, Colour& colour) {
    (void)reader.ForEachChild(element, [&](const Element& child) {
        const auto place = std::ranges::find(MasteringIds(), child.id) - MasteringIds().begin();
        const auto number = static_cast<Colour::Mastering>(place);
        const double value = reader.ReadFloat(child, -1);
        if (number < Colour::kMasterings && media::IsToldMastering(number, value)) {
            colour.mastering[number] = value;
        }
    });
}

constexpr UINT64 kDolbyVisionTypes[] = {0x64766343, 0x64767643}; // dvcC, dvvC
constexpr size_t kDolbyVisionBytes = 24;

} // namespace

Colour ReadColour(const EbmlReader& reader, const Element& element) {
    Colour colour;
    (void)reader.ForEachChild(element, [&](const Element& child) {
        if (child.id == IdOf<KaxVideoColourMasterMeta>()) {
            ReadMastering(reader, child, colour);
            return;
        }
        const auto place = std::ranges::find(NumberIds(), child.id) - NumberIds().begin();
        const auto number = static_cast<Colour::Number>(place);
        const UINT64 value = reader.ReadUnsigned(child);
        if (number < Colour::kNumbers && media::IsToldNumber(number, value)) {
            colour.numbers[number] = value;
        }
    });
    return colour;
}

void ReadDolbyVision(const EbmlReader& reader, const Element& mapping, std::vector<BYTE>& configuration) {
    UINT64 type = 0;
    std::vector<BYTE> bytes;
    (void)reader.ForEachChild(mapping, [&](const Element& child) {
        if (child.id == IdOf<KaxBlockAddIDType>()) {
            type = reader.ReadUnsigned(child);
        } else if (child.id == IdOf<KaxBlockAddIDExtraData>()) {
            bytes = reader.ReadBytes(child, kDolbyVisionBytes);
        }
    });
    if (std::ranges::find(kDolbyVisionTypes, type) != std::end(kDolbyVisionTypes) &&
        bytes.size() == kDolbyVisionBytes) {
        configuration = std::move(bytes);
    }
}

} // namespace matroska
