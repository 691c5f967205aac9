// What strict files are told beside rows, document type and attachments, set and read as an application does.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "records/track_colour.h"
#include "tests/matroska_muxer/muxer_rig.h"
#include "win/bstr.h"

using namespace test_support;

namespace {

class OptionParameters : public ::testing::Test {
  protected:
    HRESULT SetNumber(const GUID& key, UINT32 number) {
        VARIANT value{};
        V_UI4(&value) = number;
        return m_rig.Config()->SetValue(&key, &value);
    }
    [[nodiscard]] UINT32 Number(const GUID& key) const {
        VARIANT value{};
        V_UI8(&value) = 0xeeeeeeeeeeeeeeeeULL;
        EXPECT_EQ(S_OK, m_rig.Config()->GetValue(&key, &value));
        return V_UI4(&value);
    }
    HRESULT SetSeed(UINT64 seed) {
        VARIANT value{};
        V_UI8(&value) = seed;
        return m_rig.Config()->SetValue(&MKVMUX_Seed, &value);
    }
    [[nodiscard]] UINT64 Seed() const {
        VARIANT value{};
        EXPECT_EQ(S_OK, m_rig.Config()->GetValue(&MKVMUX_Seed, &value));
        return V_UI8(&value);
    }
    HRESULT SetTitle(BSTR title) {
        VARIANT value{};
        V_BSTR(&value) = title;
        return m_rig.Config()->SetValue(&MKVMUX_Title, &value);
    }
    HRESULT SetTitle(WideStringView title) { return SetTitle(win::Bstr(title).Get()); }
    [[nodiscard]] WideString Title() const {
        VARIANT value{};
        EXPECT_EQ(S_OK, m_rig.Config()->GetValue(&MKVMUX_Title, &value));
        EXPECT_NE(nullptr, V_BSTR(&value));
        win::Bstr title;
        *title.Put() = V_BSTR(&value);
        return WideString(title.View());
    }
    HRESULT SetFlags(const MuxTrackFlags& flags) {
        VARIANT value{};
        V_BYREF(&value) = const_cast<MuxTrackFlags*>(&flags);
        return m_rig.Config()->SetValue(&MKVMUX_TrackFlags, &value);
    }
    HRESULT SetColour(const MuxTrackColour& colour) {
        VARIANT value{};
        V_BYREF(&value) = const_cast<MuxTrackColour*>(&colour);
        return m_rig.Config()->SetValue(&MKVMUX_TrackColour, &value);
    }
    HRESULT GetColour(MuxTrackColour& colour) const {
        VARIANT value{};
        V_BYREF(&value) = &colour;
        return m_rig.Config()->GetValue(&MKVMUX_TrackColour, &value);
    }
    HRESULT GetFlags(MuxTrackFlags& flags) const {
        VARIANT value{};
        V_BYREF(&value) = &flags;
        return m_rig.Config()->GetValue(&MKVMUX_TrackFlags, &value);
    }
    HRESULT SetIndex(const MuxReservedIndex& index) {
        VARIANT value{};
        V_BYREF(&value) = const_cast<MuxReservedIndex*>(&index);
        return m_rig.Config()->SetValue(&MKVMUX_ReserveIndex, &value);
    }
    [[nodiscard]] std::pair<UINT64, REFERENCE_TIME> Index() const {
        MuxReservedIndex index{9, 9};
        VARIANT value{};
        V_BYREF(&value) = &index;
        EXPECT_EQ(S_OK, m_rig.Config()->GetValue(&MKVMUX_ReserveIndex, &value));
        return {index.bytes, index.expectedLength};
    }
    // Saves and throws away, so that the filter is clean.
    void Clean() {
        MemoryStream saved;
        EXPECT_EQ(S_OK, m_rig.Config()->Save(&saved, TRUE));
        EXPECT_EQ(S_FALSE, m_rig.Config()->IsDirty());
    }
    [[nodiscard]] bool IsDirty() const { return m_rig.Config()->IsDirty() == S_OK; }

    MuxerRig m_rig;
};

std::string Shown(const MuxTrackFlags& flags) {
    std::string text = std::to_string(flags.index) + ":";
    for (const BYTE flag :
         {flags.forced, flags.hearingImpaired, flags.visualImpaired, flags.original, flags.commentary}) {
        text += " " + std::to_string(flag);
    }
    return text;
}

TEST_F(OptionParameters, AFreshFilterIsCompatibleAndHasStatisticsAndNothingElse) {
    EXPECT_EQ(UINT32{MuxProfile_Compatible}, Number(MKVMUX_Profile));
    EXPECT_EQ(1u, Number(MKVMUX_TrackStatistics));
    EXPECT_EQ(0u, Seed());
    EXPECT_EQ(std::pair(UINT64{0}, REFERENCE_TIME{0}), Index());
    EXPECT_EQ(WideString(), Title());
    MuxTrackFlags flags{99, 1, 1, 1, 1, 1};
    EXPECT_EQ(S_OK, GetFlags(flags));
    EXPECT_EQ("99: 255 255 255 255 255", Shown(flags));
}

TEST_F(OptionParameters, NumbersComeBackAndOthersAreRefusedAndChangeNothing) {
    for (const GUID& key : {MKVMUX_Profile, MKVMUX_TrackStatistics}) {
        for (const UINT32 number : {1u, 0u}) {
            EXPECT_EQ(S_OK, SetNumber(key, number));
            for (const UINT32 other : {2u, 0x100u, 0x80000000u, 0xffffffffu}) {
                EXPECT_EQ(E_INVALIDARG, SetNumber(key, other));
            }
            EXPECT_EQ(number, Number(key));
        }
    }
}

TEST_F(OptionParameters, EverySeedComesBackWhole) {
    for (const UINT64 seed : {1ULL, 0x100000000ULL, 0xfedcba9876543210ULL, 0xffffffffffffffffULL, 0ULL}) {
        EXPECT_EQ(S_OK, SetSeed(seed));
        EXPECT_EQ(seed, Seed());
    }
}

TEST_F(OptionParameters, TheRoomForTheIndexComesBackAndWhatIsNoneIsRefusedAndChangesNothing) {
    constexpr UINT64 kMost = UINT64{16} << 20;
    for (const MuxReservedIndex& index : {MuxReservedIndex{kMost, 0}, MuxReservedIndex{0, INT64_MAX},
                                          MuxReservedIndex{1, 2}, MuxReservedIndex{0, 0}, MuxReservedIndex{7, 8}}) {
        EXPECT_EQ(S_OK, SetIndex(index));
        EXPECT_EQ(std::pair(index.bytes, index.expectedLength), Index());
    }
    EXPECT_EQ(E_INVALIDARG, SetIndex({kMost + 1, 0}));
    EXPECT_EQ(E_INVALIDARG, SetIndex({0, -1}));
    EXPECT_EQ(std::pair(UINT64{7}, REFERENCE_TIME{8}), Index());
    EXPECT_EQ(E_POINTER, m_rig.Config()->SetValue(&MKVMUX_ReserveIndex, std::make_unique<VARIANT>().get()));
    EXPECT_EQ(E_POINTER, m_rig.Config()->GetValue(&MKVMUX_ReserveIndex, std::make_unique<VARIANT>().get()));
}

TEST_F(OptionParameters, ATitleIsCopiedBothWays) {
    const WideString text = OLESTR("\U0001F3AC caf\u00e9");
    win::Bstr given{text};
    ASSERT_EQ(S_OK, SetTitle(given.Get()));
    given.Get()[0] = OLESTR('x');
    EXPECT_EQ(text, Title());
    EXPECT_EQ(text, Title()) << "the caller's is the caller's alone";
    ASSERT_EQ(S_OK, SetTitle(BSTR{}));
    EXPECT_EQ(WideString(), Title()) << "null counts as empty";
}

TEST_F(OptionParameters, ATitleThatNoFileCanHoldIsRefusedAndTheOldOneStays) {
    const WideString longest(32767, OLESTR('t'));
    const WideString halves{0xd83c, OLESTR('-'), 0xdfac}; // of pairs: written as the names of tracks are
    EXPECT_EQ(S_OK, SetTitle(halves));
    EXPECT_EQ(halves, Title());
    EXPECT_EQ(S_OK, SetTitle(longest));
    EXPECT_EQ(E_INVALIDARG, SetTitle(longest + OLESTR("t")));
    EXPECT_EQ(E_INVALIDARG, SetTitle(WideStringView(OLESTR("a\0b"), 3)));
    EXPECT_EQ(longest, Title());
}

TEST_F(OptionParameters, FlagsComeBackAndThoseOfOtherInputsStay) {
    const MuxTrackFlags flags{5, MuxFlag_On, MuxFlag_Off, MuxFlag_Unset, MuxFlag_On, MuxFlag_Off};
    ASSERT_EQ(S_OK, SetFlags(flags));
    MuxTrackFlags read{5, 9, 9, 9, 9, 9};
    ASSERT_EQ(S_OK, GetFlags(read));
    EXPECT_EQ("5: 1 0 255 1 0", Shown(read));
    read.index = 6;
    ASSERT_EQ(S_OK, GetFlags(read));
    EXPECT_EQ("6: 255 255 255 255 255", Shown(read));
}

TEST_F(OptionParameters, FlagsOfNoRowAndValuesThatAreNoneAreRefusedAndChangeNothing) {
    const MuxTrackFlags flags{0, MuxFlag_On, MuxFlag_On, MuxFlag_On, MuxFlag_On, MuxFlag_On};
    ASSERT_EQ(S_OK, SetFlags(flags));
    for (const INT32 index : {-1, 100, 0x7fffffff}) {
        MuxTrackFlags outside{index, 0, 1, 0, 1, 0};
        EXPECT_EQ(E_INVALIDARG, SetFlags(outside));
        EXPECT_EQ(E_INVALIDARG, GetFlags(outside));
        EXPECT_EQ(std::to_string(index) + ": 0 1 0 1 0", Shown(outside)) << "the caller's stays, too";
    }
    for (BYTE MuxTrackFlags::*const flag :
         {&MuxTrackFlags::forced, &MuxTrackFlags::hearingImpaired, &MuxTrackFlags::visualImpaired,
          &MuxTrackFlags::original, &MuxTrackFlags::commentary}) {
        MuxTrackFlags wrong{0, 0, 0, 0, 0, 0};
        wrong.*flag = 2;
        EXPECT_EQ(E_INVALIDARG, SetFlags(wrong));
    }
    MuxTrackFlags read{};
    ASSERT_EQ(S_OK, GetFlags(read));
    EXPECT_EQ("0: 1 1 1 1 1", Shown(read));
    EXPECT_EQ(E_POINTER, m_rig.Config()->SetValue(&MKVMUX_TrackFlags, std::make_unique<VARIANT>().get()));
    EXPECT_EQ(E_POINTER, m_rig.Config()->GetValue(&MKVMUX_TrackFlags, std::make_unique<VARIANT>().get()));
}

TEST_F(OptionParameters, ColoursComeBackAndThoseOfOtherInputsAreUntold) {
    MuxTrackColour colour = records::UntoldColour(5);
    colour.primaries = 9;
    colour.maxLuminance = 1000;
    colour.dolbyVision[23] = 7;
    ASSERT_EQ(S_OK, SetColour(colour));
    MuxTrackColour read{};
    read.index = 5;
    ASSERT_EQ(S_OK, GetColour(read));
    EXPECT_EQ(9, read.primaries);
    EXPECT_EQ(-1, read.transferCharacteristics);
    EXPECT_EQ(1000, read.maxLuminance);
    EXPECT_EQ(-1, read.minLuminance);
    EXPECT_EQ(7, read.dolbyVision[23]);
    read.index = 6;
    ASSERT_EQ(S_OK, GetColour(read));
    EXPECT_EQ(-1, read.primaries);
    EXPECT_EQ(-1, read.maxLuminance);
    EXPECT_EQ(0, read.dolbyVision[23]);
}

TEST_F(OptionParameters, ColoursOfNoRowAndValuesThatAreNoneAreRefusedAndChangeNothing) {
    MuxTrackColour colour = records::UntoldColour(0);
    colour.primaries = 9;
    ASSERT_EQ(S_OK, SetColour(colour));
    for (const INT32 index : {-1, 100}) {
        MuxTrackColour outside = records::UntoldColour(index);
        EXPECT_EQ(E_INVALIDARG, SetColour(outside));
        EXPECT_EQ(E_INVALIDARG, GetColour(outside));
    }
    for (INT32 MuxTrackColour::*const number : records::kColourNumbers) {
        MuxTrackColour wrong = records::UntoldColour(0);
        wrong.*number = -2;
        EXPECT_EQ(E_INVALIDARG, SetColour(wrong));
    }
    for (double MuxTrackColour::*const measure : records::kColourMastering) {
        for (const double value : {-0.5, std::numeric_limits<double>::infinity()}) {
            MuxTrackColour wrong = records::UntoldColour(0);
            wrong.*measure = value;
            EXPECT_EQ(E_INVALIDARG, SetColour(wrong));
        }
    }
    ASSERT_EQ(S_OK, GetColour(colour));
    EXPECT_EQ(9, colour.primaries);
    EXPECT_EQ(E_POINTER, m_rig.Config()->SetValue(&MKVMUX_TrackColour, std::make_unique<VARIANT>().get()));
    EXPECT_EQ(E_POINTER, m_rig.Config()->GetValue(&MKVMUX_TrackColour, std::make_unique<VARIANT>().get()));
}

TEST_F(OptionParameters, AChangeMakesTheFilterDirtyAndTheSameValueDoesNot) {
    const std::vector<std::function<HRESULT()>> changes{
        [this] { return SetNumber(MKVMUX_Profile, MuxProfile_Strict); },
        [this] { return SetNumber(MKVMUX_TrackStatistics, 0); },
        [this] { return SetSeed(77); },
        [this] {
            return SetIndex({5, 0});
        },
        [this] {
            return SetIndex({0, 5});
        },
        [this] { return SetTitle(WideStringView(OLESTR("A film"))); },
        [this] {
            return SetFlags({4, 1, 0xff, 0xff, 0xff, 0xff});
        },
        [this] {
            return SetFlags({4, 0xff, 0xff, 0xff, 0xff, 0xff});
        },
    };
    Clean();
    for (const auto& change : changes) {
        EXPECT_EQ(S_OK, change());
        EXPECT_TRUE(IsDirty()) << &change - changes.data();
        Clean();
        EXPECT_EQ(S_OK, change());
        EXPECT_FALSE(IsDirty()) << &change - changes.data();
    }
    EXPECT_EQ(E_INVALIDARG, SetNumber(MKVMUX_Profile, 5));
    EXPECT_EQ(E_INVALIDARG, SetFlags({4, 2, 0, 0, 0, 0}));
    EXPECT_FALSE(IsDirty());
}

} // namespace
