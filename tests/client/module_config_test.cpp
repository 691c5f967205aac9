// What each typed call asks of the interface, and what becomes of its answer.
#include "client/module_config.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

#include <evcode.h>

#include "tests/client/fake_module_config.h"

namespace client {
namespace {

using test_client::FakeModuleConfig;

static_assert(MuxEvent_OutputFailed >= EC_USER, "the graph would take it for one of its own");
static_assert(MuxEvent_OutputFailed == 0xCD58, "applications know the number");
static_assert(MuxEvent_NextOutputBegun == 0xCD59 && MuxEvent_NextOutputFailed == 0xCD5A, "these, too");

constexpr HRESULT kRefused = E_ACCESSDENIED;

win::Bstr Text(const WCHAR* text) {
    return win::Bstr(WideStringView(text));
}

class ModuleConfigTest : public testing::Test {
  protected:
    FakeModuleConfig m_filter; // before what holds it
    ModuleConfig m_config{&m_filter};
};

TEST_F(ModuleConfigTest, HoldsOneReferenceUntilItIsResetOrConnectedElsewhere) {
    EXPECT_EQ(1, m_filter.References());
    EXPECT_EQ(&m_filter, m_config.Interface());
    FakeModuleConfig other;
    EXPECT_EQ(S_OK, m_config.Connect(&other));
    EXPECT_EQ(0, m_filter.References());
    EXPECT_EQ(1, other.References());
    m_config.Reset();
    EXPECT_EQ(0, other.References());
    EXPECT_FALSE(m_config);
}

TEST_F(ModuleConfigTest, TheNextOutputIsHandedOnWithItsRule) {
    EXPECT_EQ(S_OK, m_config.SetNextOutputRule({sizeof(MuxNextOutputRule), MuxOutputTimes_RunOn, 5, 6, 7}));
    ASSERT_EQ(1u, m_filter.nextOutputRules.size());
    EXPECT_EQ(UINT32{MuxOutputTimes_RunOn}, m_filter.nextOutputRules[0].times);
    EXPECT_EQ(5, m_filter.nextOutputRules[0].notBefore);
    EXPECT_EQ(6, m_filter.nextOutputRules[0].minDuration);
    EXPECT_EQ(7u, m_filter.nextOutputRules[0].minBytes);
    EXPECT_EQ(S_OK, m_config.SetNextOutput(&m_filter));
    EXPECT_EQ(VT_UNKNOWN, m_filter.lastTag);
    EXPECT_EQ(S_OK, m_config.SetNextOutput(nullptr));
    EXPECT_EQ((std::vector<IUnknown*>{&m_filter, nullptr}), m_filter.nextOutputs);
}

TEST_F(ModuleConfigTest, WithoutAFilterEveryCallAnswersThatThereIsNoInterface) {
    const ModuleConfig none(nullptr);
    EXPECT_FALSE(none);
    EXPECT_EQ(nullptr, none.Interface());
    TrackRow row;
    MuxDocType docType{};
    REFERENCE_TIME position = 0;
    UINT16 count = 0;
    const std::array answers{none.GetTrack(0, row),      none.SetTrack(row),        none.Attach({}),
                             none.GetDocType(docType),   none.SetDocType(docType),  none.SetLogDirectory({}),
                             none.GetPosition(position), none.GetInputCount(count), none.IsDirty(),
                             none.Save(nullptr, true),   none.Load(nullptr)};
    for (const HRESULT hr : answers) {
        EXPECT_EQ(E_NOINTERFACE, hr);
    }
}

TEST_F(ModuleConfigTest, WithoutAFilterTheOptionsAnswerThatThereIsNoInterface) {
    const ModuleConfig none(nullptr);
    MuxProfile profile{};
    MuxTrackFlags flags{};
    WideString title;
    UINT64 seed = 0;
    bool statistics = false;
    MuxReservedIndex index{};
    const std::array answers{none.GetProfile(profile),
                             none.SetProfile(profile),
                             none.GetFlags(0, flags),
                             none.SetFlags(flags),
                             none.GetTitle(title),
                             none.SetTitle(title),
                             none.GetSeed(seed),
                             none.SetSeed(seed),
                             none.GetTrackStatistics(statistics),
                             none.SetTrackStatistics(statistics),
                             none.GetReservedIndex(index),
                             none.SetReservedIndex(index)};
    for (const HRESULT hr : answers) {
        EXPECT_EQ(E_NOINTERFACE, hr);
    }
}

TEST_F(ModuleConfigTest, WithoutAFilterTheListsAnswerThatThereIsNoInterface) {
    const ModuleConfig none(nullptr);
    Chapter chapter;
    Tag tag;
    const std::array answers{none.AddChapter({}),  none.MarkChapter({}, {}), none.GetChapter(0, chapter),
                             none.ClearChapters(), none.AddTag({}),          none.GetTag(0, tag),
                             none.ClearTags()};
    for (const HRESULT hr : answers) {
        EXPECT_EQ(E_NOINTERFACE, hr);
    }
}

TEST_F(ModuleConfigTest, ARowIsWrittenFieldByField) {
    EXPECT_EQ(S_OK, m_config.SetTrack({7, 0, 1, 9, Text(OLESTR("French")), Text(OLESTR("Commentary")), 5}));
    ASSERT_EQ(1u, m_filter.writes.size());
    EXPECT_EQ(7, m_filter.writes[0].track);
    EXPECT_EQ((FakeModuleConfig::Row{0, 1, 9, OLESTR("French"), OLESTR("Commentary"), 5}), m_filter.writes[0].row);
    EXPECT_EQ(VT_BYREF, m_filter.lastTag);
    m_filter.trackAnswer = kRefused;
    EXPECT_EQ(kRefused, m_config.SetTrack({}));
}

TEST_F(ModuleConfigTest, ARowIsReadFieldByField) {
    m_filter.rows[7] = {0, 1, 9, OLESTR("French"), OLESTR("Commentary"), MuxTrackType_Subtitle};
    TrackRow row;
    ASSERT_EQ(S_OK, m_config.GetTrack(7, row));
    EXPECT_EQ(7, row.index);
    EXPECT_EQ(0, row.enabled);
    EXPECT_EQ(1, row.isDefault);
    EXPECT_EQ(9, row.reserved);
    EXPECT_EQ(WideStringView(OLESTR("French")), row.language.View());
    EXPECT_EQ(WideStringView(OLESTR("Commentary")), row.name.View());
    EXPECT_EQ(MuxTrackType_Subtitle, row.trackType);
    EXPECT_EQ(VT_BYREF, m_filter.lastTag);
}

TEST_F(ModuleConfigTest, NullAndEmptyTextsOfARowAreKeptApartBothWays) {
    m_filter.rows[0] = {1, 0, 0, std::nullopt, WideString(), MuxTrackType_Audio};
    TrackRow row;
    ASSERT_EQ(S_OK, m_config.GetTrack(0, row));
    EXPECT_EQ(nullptr, row.language.Get());
    EXPECT_NE(nullptr, row.name.Get());
    ASSERT_EQ(S_OK, m_config.SetTrack(row));
    EXPECT_EQ(m_filter.rows[0], m_filter.writes.at(0).row);
}

TEST_F(ModuleConfigTest, ARowThatTheFilterDoesNotHaveLeavesTheCallersRowAsItWas) {
    TrackRow row{3, 0, 0, 0, Text(OLESTR("Dutch")), Text(OLESTR("mine")), 1};
    EXPECT_EQ(E_INVALIDARG, m_config.GetTrack(100, row));
    EXPECT_EQ(3, row.index);
    EXPECT_EQ(WideStringView(OLESTR("mine")), row.name.View());
}

TEST_F(ModuleConfigTest, AnAttachmentIsHandedOverWhole) {
    const std::array<BYTE, 3> data{1, 2, 3};
    EXPECT_EQ(S_OK, m_config.Attach({OLESTR("font.ttf"), OLESTR("a font"), "font/ttf", data, 0x123456789abcdef}));
    ASSERT_EQ(1u, m_filter.attachments.size());
    const FakeModuleConfig::Attached& attached = m_filter.attachments[0];
    EXPECT_EQ(WideString(OLESTR("font.ttf")), attached.fileName);
    EXPECT_EQ(WideString(OLESTR("a font")), attached.description);
    EXPECT_EQ("font/ttf", attached.mimeType);
    EXPECT_EQ((std::vector<BYTE>{1, 2, 3}), attached.data);
    EXPECT_EQ(0x123456789abcdefu, attached.uid);
    EXPECT_EQ(VT_BYREF, m_filter.lastTag);
}

TEST_F(ModuleConfigTest, WhatAnAttachmentDoesNotSayIsNullAndWhatItSaysEmptyIsThere) {
    EXPECT_EQ(S_OK, m_config.Attach({}));
    EXPECT_EQ(S_OK, m_config.Attach({WideString(), WideString(), "", std::span<const BYTE>(), 0}));
    ASSERT_EQ(2u, m_filter.attachments.size());
    const FakeModuleConfig::Attached& nothing = m_filter.attachments[0];
    EXPECT_FALSE(nothing.fileName || nothing.description || nothing.mimeType || nothing.data);
    const FakeModuleConfig::Attached& empty = m_filter.attachments[1];
    EXPECT_EQ(WideString(), empty.fileName);
    EXPECT_EQ(WideString(), empty.description);
    EXPECT_EQ("", empty.mimeType);
    EXPECT_EQ(std::vector<BYTE>(), empty.data);
}

TEST_F(ModuleConfigTest, AnAttachmentWhoseSizeTheRecordCannotHoldIsRefused) {
    const BYTE byte = 0;
    Attachment attachment;
    attachment.data.emplace(&byte, size_t{std::numeric_limits<UINT32>::max()} + 1); // never read
    EXPECT_EQ(E_INVALIDARG, m_config.Attach(attachment));
    EXPECT_TRUE(m_filter.attachments.empty());
}

TEST_F(ModuleConfigTest, TheDocumentTypeGoesBothWaysAndWhatIsNotWebmIsMatroska) {
    EXPECT_EQ(S_OK, m_config.SetDocType(MuxDocType_Webm));
    EXPECT_EQ(1u, m_filter.writes.at(0).docType);
    EXPECT_EQ(VT_UI4, m_filter.lastTag);
    const std::array<std::pair<ULONG, MuxDocType>, 4> readings{
        {{1, MuxDocType_Webm}, {0, MuxDocType_Matroska}, {2, MuxDocType_Matroska}, {0xffffffff, MuxDocType_Matroska}}};
    for (const auto& [stored, expected] : readings) {
        m_filter.docType = stored;
        MuxDocType docType = expected == MuxDocType_Webm ? MuxDocType_Matroska : MuxDocType_Webm;
        EXPECT_EQ(S_OK, m_config.GetDocType(docType));
        EXPECT_EQ(expected, docType) << stored;
    }
}

TEST_F(ModuleConfigTest, ProfileAndStatisticsGoBothWays) {
    m_filter.options.emplace();
    for (const auto profile : {MuxProfile_Strict, MuxProfile_Compatible}) {
        ASSERT_EQ(S_OK, m_config.SetProfile(profile));
        EXPECT_EQ(UINT32{profile}, m_filter.options->profile);
        MuxProfile read{};
        ASSERT_EQ(S_OK, m_config.GetProfile(read));
        EXPECT_EQ(profile, read);
    }
    for (const bool statistics : {false, true}) {
        ASSERT_EQ(S_OK, m_config.SetTrackStatistics(statistics));
        EXPECT_EQ(statistics ? 1u : 0u, m_filter.options->statistics);
        bool read = !statistics;
        ASSERT_EQ(S_OK, m_config.GetTrackStatistics(read));
        EXPECT_EQ(statistics, read);
    }
    EXPECT_EQ(VT_UI4, m_filter.lastTag);
    m_filter.optionAnswer = kRefused;
    EXPECT_EQ(kRefused, m_config.SetProfile(MuxProfile_Strict));
}

TEST_F(ModuleConfigTest, TitleAndSeedGoBothWaysWhole) {
    m_filter.options.emplace();
    ASSERT_EQ(S_OK, m_config.SetTitle(OLESTR("A film")));
    EXPECT_EQ(VT_BSTR, m_filter.lastTag);
    EXPECT_EQ(WideString(OLESTR("A film")), m_filter.options->title);
    WideString title;
    ASSERT_EQ(S_OK, m_config.GetTitle(title));
    EXPECT_EQ(WideString(OLESTR("A film")), title);
    ASSERT_EQ(S_OK, m_config.SetSeed(0xfedcba9876543210ULL));
    EXPECT_EQ(VT_UI8, m_filter.lastTag);
    UINT64 seed = 0;
    ASSERT_EQ(S_OK, m_config.GetSeed(seed));
    EXPECT_EQ(0xfedcba9876543210ULL, seed);
}

TEST_F(ModuleConfigTest, TheRoomForTheIndexGoesBothWays) {
    MuxReservedIndex index{3, 4};
    EXPECT_EQ(E_FAIL, m_config.GetReservedIndex(index));
    EXPECT_EQ(3u, index.bytes);
    m_filter.options.emplace();
    ASSERT_EQ(S_OK, m_config.SetReservedIndex({5, 6}));
    EXPECT_EQ(VT_BYREF, m_filter.lastTag);
    ASSERT_EQ(S_OK, m_config.GetReservedIndex(index));
    EXPECT_EQ(5u, index.bytes);
    EXPECT_EQ(6, index.expectedLength);
}

TEST_F(ModuleConfigTest, FlagsAreThoseOfTheInputThatIsAskedFor) {
    m_filter.options.emplace();
    ASSERT_EQ(S_OK, m_config.SetFlags({7, 1, 0, MuxFlag_Unset, 1, 0}));
    EXPECT_EQ(VT_BYREF, m_filter.lastTag);
    MuxTrackFlags flags{3, 9, 9, 9, 9, 9};
    ASSERT_EQ(S_OK, m_config.GetFlags(7, flags));
    EXPECT_EQ(7, flags.index);
    EXPECT_EQ(1, flags.forced);
    EXPECT_EQ(0, flags.hearingImpaired);
    EXPECT_EQ(MuxFlag_Unset, flags.visualImpaired);
    EXPECT_EQ(1, flags.original);
    EXPECT_EQ(0, flags.commentary);
}

TEST_F(ModuleConfigTest, ColoursAreARecord) {
    m_filter.options.emplace();
    MuxTrackColour colour{};
    colour.index = 7;
    colour.primaries = 9;
    colour.minLuminance = 0.005;
    ASSERT_EQ(S_OK, m_config.SetColour(colour));
    EXPECT_EQ(VT_BYREF, m_filter.lastTag);
    MuxTrackColour read{};
    ASSERT_EQ(S_OK, m_config.GetColour(read));
    EXPECT_EQ(7, read.index);
    EXPECT_EQ(9, read.primaries);
    EXPECT_EQ(0.005, read.minLuminance);
}

TEST_F(ModuleConfigTest, AFilterThatDoesNotKnowTheOptionsLeavesTheCallersValues) {
    MuxProfile profile = MuxProfile_Strict;
    EXPECT_EQ(E_FAIL, m_config.GetProfile(profile));
    EXPECT_EQ(MuxProfile_Strict, profile);
    WideString title = OLESTR("mine");
    EXPECT_EQ(E_FAIL, m_config.GetTitle(title));
    EXPECT_EQ(WideString(OLESTR("mine")), title);
    MuxTrackFlags flags{3, 9, 9, 9, 9, 9};
    EXPECT_EQ(E_FAIL, m_config.GetFlags(0, flags));
    EXPECT_EQ(3, flags.index);
    MuxTrackColour colour{};
    colour.primaries = 9;
    EXPECT_EQ(E_FAIL, m_config.GetColour(colour));
    EXPECT_EQ(9, colour.primaries);
    bool statistics = false;
    EXPECT_EQ(E_FAIL, m_config.GetTrackStatistics(statistics));
    EXPECT_FALSE(statistics);
}

TEST_F(ModuleConfigTest, TheLogDirectoryIsATextAndAnEmptyOneIsNotNull) {
    EXPECT_EQ(S_OK, m_config.SetLogDirectory(OLESTR("C:\\traces")));
    EXPECT_EQ(VT_BSTR, m_filter.lastTag);
    EXPECT_EQ(S_OK, m_config.SetLogDirectory({}));
    EXPECT_EQ((std::vector<FakeModuleConfig::Text>{OLESTR("C:\\traces"), WideString()}), m_filter.logDirectories);
}

TEST_F(ModuleConfigTest, PositionAndInputCountAreReadInTheirWidths) {
    m_filter.position = 0x123456789abc;
    m_filter.inputCount = 0xfedc;
    REFERENCE_TIME position = 0;
    UINT16 count = 0;
    EXPECT_EQ(S_OK, m_config.GetPosition(position));
    EXPECT_EQ(VT_I8, m_filter.lastTag);
    EXPECT_EQ(S_OK, m_config.GetInputCount(count));
    EXPECT_EQ(VT_UI2, m_filter.lastTag);
    EXPECT_EQ(0x123456789abc, position);
    EXPECT_EQ(0xfedc, count);
}

TEST_F(ModuleConfigTest, FiguresAreThoseOfTheInputThatIsAskedFor) {
    m_filter.file.clusters = 7;
    m_filter.figures = {{}, {}};
    m_filter.figures[1].packets = 9;
    MuxStatistics file{};
    EXPECT_EQ(S_OK, m_config.GetStatistics(file));
    EXPECT_EQ(VT_BYREF, m_filter.lastTag);
    EXPECT_EQ(7u, file.clusters);
    EXPECT_EQ(sizeof(file), file.size);
    MuxInputStatistics input{};
    EXPECT_EQ(S_OK, m_config.GetInputStatistics(1, input));
    EXPECT_EQ(9u, input.packets);
    EXPECT_EQ(1, input.index);
    EXPECT_EQ(sizeof(input), input.size);
    input.packets = 3;
    EXPECT_EQ(E_INVALIDARG, m_config.GetInputStatistics(2, input));
    EXPECT_EQ(3u, input.packets);
}

TEST_F(ModuleConfigTest, AReadThatFailsChangesNothing) {
    m_filter.readAnswer = kRefused;
    MuxDocType docType = MuxDocType_Webm;
    REFERENCE_TIME position = 5;
    UINT16 count = 6;
    EXPECT_EQ(kRefused, m_config.GetDocType(docType));
    EXPECT_EQ(kRefused, m_config.GetPosition(position));
    EXPECT_EQ(kRefused, m_config.GetInputCount(count));
    EXPECT_EQ(MuxDocType_Webm, docType);
    EXPECT_EQ(5, position);
    EXPECT_EQ(6, count);
}

TEST_F(ModuleConfigTest, ThePersistedConfigurationIsTheInterfacesOwn) {
    auto* const stream = reinterpret_cast<IStream*>(0x1000); // never called
    EXPECT_EQ(S_OK, m_config.Save(stream, true));
    EXPECT_EQ(S_OK, m_config.Save(stream, false));
    EXPECT_EQ(S_OK, m_config.Load(stream));
    EXPECT_EQ((std::vector<BOOL>{TRUE, FALSE}), m_filter.saves);
    EXPECT_EQ(std::vector<IStream*>{stream}, m_filter.loads);
    m_filter.persistAnswer = S_FALSE;
    EXPECT_EQ(S_FALSE, m_config.IsDirty());
    EXPECT_EQ(S_FALSE, m_config.Load(stream));
}

// The numbers are in files and in programs that were built long ago.
TEST(PublicHeader, TheNumbersOfDocumentAndTrackTypesStand) {
    EXPECT_EQ(0, MuxDocType_Matroska);
    EXPECT_EQ(1, MuxDocType_Webm);
    EXPECT_EQ(-1, MuxTrackType_Unknown);
    EXPECT_EQ(1, MuxTrackType_Video);
    EXPECT_EQ(2, MuxTrackType_Audio);
    EXPECT_EQ(17, MuxTrackType_Subtitle);
}

// Records are laid out for every compiler that includes the header: 64 bits, natural alignment.
TEST(PublicHeader, TheNumbersOfProfilesAndFlagsStand) {
    EXPECT_EQ(0, MuxProfile_Compatible);
    EXPECT_EQ(1, MuxProfile_Strict);
    EXPECT_EQ(0, MuxFlag_Off);
    EXPECT_EQ(1, MuxFlag_On);
    EXPECT_EQ(0xFF, MuxFlag_Unset);
    EXPECT_EQ(16u, sizeof(MuxReservedIndex));
    EXPECT_EQ(12u, sizeof(MuxTrackFlags));
    EXPECT_EQ(8u, offsetof(MuxTrackFlags, commentary));
    EXPECT_EQ(160u, sizeof(MuxTrackColour));
    EXPECT_EQ(56u, offsetof(MuxTrackColour, redX));
    EXPECT_EQ(136u, offsetof(MuxTrackColour, dolbyVision));
}

TEST(PublicHeader, TheRecordsKeepTheirLayout) {
    EXPECT_EQ(32u, sizeof(TrackSettings));
    EXPECT_EQ(8u, offsetof(TrackSettings, language));
    EXPECT_EQ(24u, offsetof(TrackSettings, trackType));
    EXPECT_EQ(48u, sizeof(MuxAttachment));
    EXPECT_EQ(24u, offsetof(MuxAttachment, dataSize));
    EXPECT_EQ(40u, offsetof(MuxAttachment, uid));
}

// Whoever was built with this header asks for these many bytes.
TEST(PublicHeader, TheRecordsOfFiguresKeepTheirLayout) {
    EXPECT_EQ(56u, sizeof(MuxStatistics));
    EXPECT_EQ(0u, offsetof(MuxStatistics, size));
    EXPECT_EQ(8u, offsetof(MuxStatistics, bytesWritten));
    EXPECT_EQ(48u, offsetof(MuxStatistics, elapsed));
    EXPECT_EQ(32u, sizeof(MuxNextOutputRule));
    EXPECT_EQ(8u, offsetof(MuxNextOutputRule, notBefore));
    EXPECT_EQ(88u, sizeof(MuxInputStatistics));
    EXPECT_EQ(0u, offsetof(MuxInputStatistics, size));
    EXPECT_EQ(4u, offsetof(MuxInputStatistics, index));
    EXPECT_EQ(8u, offsetof(MuxInputStatistics, packets));
    EXPECT_EQ(56u, offsetof(MuxInputStatistics, lastPacket));
    EXPECT_EQ(84u, offsetof(MuxInputStatistics, isSilent));
}

} // namespace
} // namespace client
