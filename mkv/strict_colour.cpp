#include "mkv/strict_colour.h"

#include <iterator>

#include <matroska/KaxTrackEntryData.h>
#include <matroska/KaxTrackVideo.h>
#include <matroska/KaxTracks.h>

#include "mkv/element_values.h"
#include "records/track_colour.h"

namespace mkv {

namespace {

using namespace libmatroska;
using libebml::EbmlMaster;
using media::Colour;

using SetNumber = void (*)(EbmlMaster& parent, UINT64 value);
using SetMeasure = void (*)(EbmlMaster& parent, double value);

template <typename Child>
void SetTold(EbmlMaster& parent, UINT64 value) {
    SetToldChild<Child>(parent, value);
}

// Eight bytes: four would change what the stream tells.
template <typename Child>
void SetMeasured(EbmlMaster& parent, double value) {
    libebml::GetChild<Child>(parent).SetPrecision(libebml::EbmlFloat::FLOAT_64);
    SetToldChild<Child>(parent, value);
}

// In the order of the lists, which is the format's.
constexpr SetNumber kNumbers[] = {SetTold<KaxVideoColourMatrix>,      SetTold<KaxVideoBitsPerChannel>,
                                  SetTold<KaxVideoChromaSubsampHorz>, SetTold<KaxVideoChromaSubsampVert>,
                                  SetTold<KaxVideoCbSubsampHorz>,     SetTold<KaxVideoCbSubsampVert>,
                                  SetTold<KaxVideoChromaSitHorz>,     SetTold<KaxVideoChromaSitVert>,
                                  SetTold<KaxVideoColourRange>,       SetTold<KaxVideoColourTransferCharacter>,
                                  SetTold<KaxVideoColourPrimaries>,   SetTold<KaxVideoColourMaxCLL>,
                                  SetTold<KaxVideoColourMaxFALL>};
constexpr SetMeasure kMastering[] = {SetMeasured<KaxVideoRChromaX>,          SetMeasured<KaxVideoRChromaY>,
                                     SetMeasured<KaxVideoGChromaX>,          SetMeasured<KaxVideoGChromaY>,
                                     SetMeasured<KaxVideoBChromaX>,          SetMeasured<KaxVideoBChromaY>,
                                     SetMeasured<KaxVideoWhitePointChromaX>, SetMeasured<KaxVideoWhitePointChromaY>,
                                     SetMeasured<KaxVideoLuminanceMax>,      SetMeasured<KaxVideoLuminanceMin>};
static_assert(std::size(kNumbers) == Colour::kNumbers && records::kColourNumbers.size() == Colour::kNumbers);
static_assert(std::size(kMastering) == Colour::kMasterings && records::kColourMastering.size() == Colour::kMasterings);

// The boxes of the ISO base media format whose names tell what follows: later profiles have one of their own.
constexpr UINT64 kConfigurationOfFirstProfiles = 0x64766343; // dvcC
constexpr UINT64 kConfigurationOfLaterProfiles = 0x64767643; // dvvC
constexpr unsigned kLastFirstProfile = 7;

unsigned DolbyVisionProfile(const MuxTrackColour& record) {
    return static_cast<unsigned>(record.dolbyVision[2]) >> 1; // behind two bytes of version
}

} // namespace

Colour ToldColour(const MuxTrackColour& record) {
    Colour colour;
    for (size_t i = 0; i < Colour::kNumbers; ++i) {
        const INT32 value = record.*records::kColourNumbers[i];
        if (value >= 0 && media::IsToldNumber(static_cast<Colour::Number>(i), static_cast<UINT64>(value))) {
            colour.numbers[i] = static_cast<UINT64>(value);
        }
    }
    for (size_t i = 0; i < Colour::kMasterings; ++i) {
        const double value = record.*records::kColourMastering[i];
        if (media::IsToldMastering(static_cast<Colour::Mastering>(i), value)) {
            colour.mastering[i] = value;
        }
    }
    return colour;
}

void FillColour(KaxVideoColour& element, const Colour& colour) {
    for (size_t i = 0; i < Colour::kNumbers; ++i) {
        if (colour.numbers[i]) {
            kNumbers[i](element, *colour.numbers[i]);
        }
    }
    if (!colour.TellsMastering()) {
        return;
    }
    auto& display = libebml::GetChild<KaxVideoColourMasterMeta>(element);
    for (size_t i = 0; i < Colour::kMasterings; ++i) {
        if (colour.mastering[i]) {
            kMastering[i](display, *colour.mastering[i]);
        }
    }
}

void AddDolbyVision(KaxTrackEntry& entry, const MuxTrackColour& record) {
    if (!records::HasDolbyVision(record)) {
        return;
    }
    auto& mapping = libebml::GetChild<KaxBlockAdditionMapping>(entry);
    const bool isFirst = DolbyVisionProfile(record) <= kLastFirstProfile;
    SetChild<KaxBlockAddIDType>(mapping, isFirst ? kConfigurationOfFirstProfiles : kConfigurationOfLaterProfiles);
    SetBytesChild<KaxBlockAddIDExtraData>(mapping, record.dolbyVision);
}

} // namespace mkv
