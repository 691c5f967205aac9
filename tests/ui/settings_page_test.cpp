// The settings page of the built module: with a real muxer, and with parameters that record and refuse.
#include <initguid.h>

#include <qrx_mkvmuxer.h>

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/client/fake_module_config.h"
#include "tests/ui/muxer_under_test.h"
#include "tests/ui/page_rig.h"

using namespace ui_test;
using test_client::FakeModuleConfig;

namespace {

using Texts = std::vector<std::wstring>;
using Row = FakeModuleConfig::Row;

// What a track has in the order of its rows.
const Texts kTrackRows{L"..bEnabled",         L"..Track Name",      L"..Track Language", L"..Forced",
                       L"..Hearing impaired", L"..Visual impaired", L"..Original",       L"..Commentary"};

// "Common" and what it has, and then the groups and tracks with their rows.
Texts PageOf(const Texts& groupsAndTracks) {
    Texts rows{L"Common", L".DocType", L".Profile", L".Title", L".Statistics", L".Index in front"};
    for (const std::wstring& row : groupsAndTracks) {
        rows.push_back(row);
        if (row[0] == L'.') {
            rows.insert(rows.end(), kTrackRows.begin(), kTrackRows.end());
        }
    }
    return rows;
}

class SettingsPageTest : public testing::Test {
  protected:
    // Both leave the row for "Common".
    void Choose(const std::wstring& path, const std::wstring& choice) {
        m_rig.ClickValue(path);
        m_rig.Tree().ChooseWithKeys(choice);
        m_rig.ClickLabel(L"Common");
    }
    void TypeInto(const std::wstring& path, const std::wstring& text) {
        m_rig.ClickValue(path);
        TypeText(text);
        PumpMessages();
        m_rig.ClickLabel(L"Common");
    }
    [[nodiscard]] HRESULT Apply() { return m_rig.Page().Apply(); }

    FakeModuleConfig m_config; // before the page, which holds it
    PageRig m_rig{CLSID_MKVMuxerPropertyPage};
};

// ---- What is shown -----------------------------------------------------------------------------------------------

TEST_F(SettingsPageTest, AMuxerWithoutConnectedInputsShowsCommonOnly) {
    MuxerUnderTest muxer;
    m_rig.Show(muxer.Filter());
    EXPECT_EQ(PageOf({}), m_rig.Tree().Rows());
    m_rig.Page().Deactivate();
    m_rig.Page().SetObjects(0, nullptr);
}

TEST_F(SettingsPageTest, TwoVideoInputsWithAnAudioInputBetweenThemAreGroupedByKind) {
    MuxerUnderTest muxer;
    muxer.ConnectVideo();
    muxer.ConnectAudio();
    muxer.ConnectVideo();
    m_rig.Show(muxer.Filter());
    EXPECT_EQ(PageOf({L"Video", L".In 0", L".In 2", L"Audio", L".In 1"}), m_rig.Tree().Rows());
    m_rig.Page().Deactivate();
    m_rig.Page().SetObjects(0, nullptr);
}

TEST_F(SettingsPageTest, SubtitlesComeLastAndOtherKindsAndUnconnectedInputsAreDropped) {
    m_config.AddInputs({MuxTrackType_Subtitle, MuxTrackType_Unknown, 3, MuxTrackType_Audio, MuxTrackType_Video});
    m_rig.Show(&m_config);
    Texts labels;
    for (const std::wstring& row : m_rig.Tree().Rows()) {
        if (row.find(L"..") != 0) {
            labels.push_back(row);
        }
    }
    EXPECT_EQ((Texts{L"Common", L".DocType", L"Video", L".In 4", L"Audio", L".In 3", L"SubTitles", L".In 0"}), labels);
}

TEST_F(SettingsPageTest, AnInputThatWasDisconnectedIsNotShown) {
    MuxerUnderTest muxer;
    muxer.ConnectVideo();
    muxer.ConnectAudio();
    muxer.Disconnect(0);
    m_rig.Show(muxer.Filter());
    EXPECT_EQ(PageOf({L"Audio", L".In 1"}), m_rig.Tree().Rows());
    m_rig.Page().Deactivate();
    m_rig.Page().SetObjects(0, nullptr);
}

TEST_F(SettingsPageTest, ItsEditorsShowWhatTheFilterHas) {
    m_config.AddInputs({MuxTrackType_Video});
    m_config.docType = 1;
    m_config.rows[0] = {0, 0, 0, L"German", L"Kamera & Ton", MuxTrackType_Video};
    m_rig.Show(&m_config);
    const std::pair<const WCHAR*, const WCHAR*> shown[] = {{L"Common/DocType", L"webm"},
                                                           {L"Video/In 0/bEnabled", L"False"},
                                                           {L"Video/In 0/Track Name", L"Kamera & Ton"},
                                                           {L"Video/In 0/Track Language", L"German"}};
    for (const auto& [path, value] : shown) {
        m_rig.ClickValue(path);
        EXPECT_EQ(value, TextOf(m_rig.Tree().Editor()));
    }
}

TEST_F(SettingsPageTest, AnyDocTypeButOneIsMatroska) {
    for (const ULONG type : {0ul, 2ul, 0xFFFFFFFFul}) {
        m_config.docType = type;
        PageRig rig(CLSID_MKVMuxerPropertyPage);
        rig.Show(&m_config);
        rig.ClickValue(L"Common/DocType");
        EXPECT_EQ(L"matroska", TextOf(rig.Tree().Editor()));
        EXPECT_EQ((Texts{L"matroska", L"webm"}), rig.Tree().EditorChoices());
        rig.Page().Deactivate();
    }
}

TEST_F(SettingsPageTest, TheLanguagesAreThoseOfTheTableInItsOrder) {
    m_config.AddInputs({MuxTrackType_Video});
    m_rig.Show(&m_config);
    m_rig.ClickValue(L"Video/In 0/Track Language");
    const Texts choices = m_rig.Tree().EditorChoices();
    ASSERT_EQ(566u, choices.size());
    EXPECT_EQ(L"Abkhazian", choices.front());
    EXPECT_EQ(L"Zuni", choices.back());
    EXPECT_EQ(2, std::count(choices.begin(), choices.end(), L"German"));
    EXPECT_EQ(1, std::count(choices.begin(), choices.end(), L"Volap\x00fck"));
}

// ---- Apply -------------------------------------------------------------------------------------------------------

TEST_F(SettingsPageTest, ChoosingWebmAndApplyingWritesOneAndMatroskaZero) {
    MuxerUnderTest muxer;
    m_rig.Show(muxer.Filter());
    Choose(L"Common/DocType", L"webm");
    EXPECT_EQ(MuxDocType_Matroska, muxer.DocType()) << "nothing is written before Apply";
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(MuxDocType_Webm, muxer.DocType());
    Choose(L"Common/DocType", L"matroska");
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(MuxDocType_Matroska, muxer.DocType());
    m_rig.Page().Deactivate();
    m_rig.Page().SetObjects(0, nullptr);
}

TEST_F(SettingsPageTest, ClicksInTheOpenListsChooseWebmAndFalse) {
    m_config.AddInputs({MuxTrackType_Video});
    m_rig.Show(&m_config);
    for (const WCHAR* path : {L"Common/DocType", L"Video/In 0/bEnabled"}) {
        m_rig.ClickValue(path);
        const HWND list = m_rig.Tree().DropDown();
        const auto rowHeight = static_cast<LONG>(SendMessageW(list, LB_GETITEMHEIGHT, 0, 0));
        ClickAt(list, {5, rowHeight + rowHeight / 2});
        PumpMessages();
        m_rig.ClickLabel(L"Common");
    }
    EXPECT_EQ(S_OK, Apply());
    ASSERT_EQ(2u, m_config.writes.size());
    EXPECT_EQ(0, m_config.writes[0].row.enabled);
    EXPECT_EQ(1u, m_config.writes[1].docType);
}

TEST_F(SettingsPageTest, ApplyingWithoutAChangeStillWritesEveryShownTrackAndTheDocType) {
    m_config.AddInputs({MuxTrackType_Video, MuxTrackType_Unknown, MuxTrackType_Subtitle});
    m_config.docType = 1;
    m_config.rows[0] = {1, 1, 7, L"Dutch", L"first", MuxTrackType_Video};
    m_config.rows[2] = {0, 0, 200, L"English", L"", MuxTrackType_Subtitle};
    m_rig.Show(&m_config);
    EXPECT_EQ(S_FALSE, m_rig.Page().IsPageDirty());
    EXPECT_EQ(S_OK, Apply());
    ASSERT_EQ(3u, m_config.writes.size());
    std::map<INT32, Row> tracks;
    for (size_t i = 0; i < 2; ++i) {
        ASSERT_TRUE(m_config.writes[i].track.has_value());
        tracks[*m_config.writes[i].track] = m_config.writes[i].row;
    }
    EXPECT_EQ((Row{1, 1, 7, L"Dutch", L"first", -1}), tracks[0]);
    EXPECT_EQ((Row{0, 0, 200, L"English", L"", -1}), tracks[2]);
    EXPECT_FALSE(m_config.writes[2].track.has_value()) << "the document type comes last";
    EXPECT_EQ(1u, m_config.writes[2].docType);
}

TEST_F(SettingsPageTest, DefaultAndReservedFlagsSurviveAnEditAndApply) {
    MuxerUnderTest muxer;
    muxer.ConnectVideo();
    muxer.SetTrack({0, 1, 1, 42, win::Bstr(L"English"), win::Bstr(L"")});
    m_rig.Show(muxer.Filter());
    Choose(L"Video/In 0/bEnabled", L"False");
    TypeInto(L"Video/In 0/Track Name", L"camera");
    Choose(L"Video/In 0/Track Language", L"Zuni");
    EXPECT_EQ(S_OK, Apply());
    const auto track = muxer.GetTrack(0);
    EXPECT_EQ(0, track.enabled);
    EXPECT_EQ(1, track.isDefault);
    EXPECT_EQ(42, track.reserved);
    EXPECT_EQ(L"Zuni", track.language.View());
    EXPECT_EQ(L"camera", track.name.View());
    m_rig.Page().Deactivate();
    m_rig.Page().SetObjects(0, nullptr);
}

TEST_F(SettingsPageTest, TheFirstChangeMakesItDirtyAndTellsTheSiteAndApplyCleansIt) {
    m_config.AddInputs({MuxTrackType_Video});
    m_rig.Show(&m_config);
    m_rig.ClickValue(L"Video/In 0/Track Name");
    TypeText(L"x");
    PumpMessages();
    EXPECT_EQ(S_FALSE, m_rig.Page().IsPageDirty()) << "the edit is still open";
    m_rig.ClickLabel(L"Common");
    EXPECT_EQ(S_OK, m_rig.Page().IsPageDirty());
    EXPECT_EQ(1, m_rig.Site().changes);
    EXPECT_EQ(static_cast<DWORD>(PROPPAGESTATUS_DIRTY), m_rig.Site().lastFlags);
    EXPECT_TRUE(m_config.writes.empty());
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(S_FALSE, m_rig.Page().IsPageDirty());
    EXPECT_EQ(L"x", m_config.writes[0].row.name);
}

TEST_F(SettingsPageTest, AnEditThatIsStillOpenIsNotApplied) {
    m_config.AddInputs({MuxTrackType_Video});
    m_rig.Show(&m_config);
    m_rig.ClickValue(L"Video/In 0/Track Name");
    TypeText(L"open");
    PumpMessages();
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(L"", m_config.writes[0].row.name);
    EXPECT_EQ(L"open", TextOf(m_rig.Tree().Editor())) << "nor is it lost";
    PressKey(VK_RETURN);
    PumpMessages();
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(L"open", m_config.writes[2].row.name);
}

TEST_F(SettingsPageTest, ARefusedTrackStopsNothingAndIsNotReported) {
    m_config.AddInputs({MuxTrackType_Video, MuxTrackType_Audio});
    m_config.trackAnswer = E_INVALIDARG;
    m_rig.Show(&m_config);
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(3u, m_config.writes.size());
}

TEST_F(SettingsPageTest, ARefusedDocTypeIsReportedAndThePageStaysDirty) {
    m_config.docTypeAnswer = E_ACCESSDENIED;
    m_rig.Show(&m_config);
    EXPECT_EQ(E_ACCESSDENIED, Apply());
    EXPECT_EQ(S_FALSE, m_rig.Page().IsPageDirty()) << "nothing was changed";
    Choose(L"Common/DocType", L"webm");
    EXPECT_EQ(E_ACCESSDENIED, Apply());
    EXPECT_EQ(S_OK, m_rig.Page().IsPageDirty());
}

// ---- Unusual values ----------------------------------------------------------------------------------------------

TEST_F(SettingsPageTest, ALanguageThatIsNotInTheTableShowsAsNoneAndIsKeptUntilAnotherIsChosen) {
    m_config.AddInputs({MuxTrackType_Video});
    m_config.rows[0].language = L"Elvish \x2603";
    m_rig.Show(&m_config);
    m_rig.ClickValue(L"Video/In 0/Track Language");
    EXPECT_EQ(L"", TextOf(m_rig.Tree().Editor()));
    m_rig.ClickLabel(L"Common");
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(L"Elvish \x2603", m_config.writes[0].row.language);
    Choose(L"Video/In 0/Track Language", L"Zuni");
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(L"Zuni", m_config.writes[2].row.language);
}

TEST_F(SettingsPageTest, TheFirstLanguageCanBeChosenForATrackWithoutAKnownOne) {
    m_config.AddInputs({MuxTrackType_Video, MuxTrackType_Audio});
    m_config.rows[0].language = L"";
    m_config.rows[1].language = L"Elvish";
    m_rig.Show(&m_config);
    for (const WCHAR* path : {L"Video/In 0/Track Language", L"Audio/In 1/Track Language"}) {
        m_rig.ClickValue(path);
        PressKey(VK_HOME);
        PumpMessages();
        EXPECT_EQ(L"Abkhazian", TextOf(m_rig.Tree().Editor()));
        m_rig.ClickLabel(L"Audio");
    }
    EXPECT_EQ(2, m_rig.Site().changes);
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(L"Abkhazian", m_config.writes[0].row.language);
    EXPECT_EQ(L"Abkhazian", m_config.writes[1].row.language);
}

TEST_F(SettingsPageTest, NamesOf255And10000CharactersAndSupplementaryOnesSurviveApply) {
    const Texts names = {std::wstring(255, L'n'), std::wstring(10000, L'n'), L"\xD83D\xDE00 \xD834\xDD1E",
                         std::wstring(L"zero\0inside", 11)};
    for (const std::wstring& name : names) {
        m_config.AddInputs({MuxTrackType_Audio});
        m_config.rows[m_config.inputCount - 1].name = name;
    }
    m_rig.Show(&m_config);
    for (size_t i = 0; i < names.size(); ++i) {
        m_rig.ClickValue(L"Audio/In " + std::to_wstring(i) + L"/Track Name"); // seen, but not edited
    }
    m_rig.ClickLabel(L"Common");
    EXPECT_EQ(S_OK, Apply());
    for (const auto& write : m_config.writes) {
        if (write.track) {
            EXPECT_EQ(names[static_cast<size_t>(*write.track)], write.row.name);
        }
    }
    EXPECT_EQ(0, m_rig.Site().changes);
}

TEST_F(SettingsPageTest, AHundredConnectedInputsAreShownEditedAndWritten) {
    MuxerUnderTest muxer;
    for (int input = 0; input < 100; ++input) {
        input % 2 == 0 ? muxer.ConnectVideo() : muxer.ConnectAudio();
        muxer.SetTrack({input, 1, 0, 0, win::Bstr(L"English"), win::Bstr(L"name " + std::to_wstring(input))});
    }
    m_rig.Show(muxer.Filter());
    EXPECT_EQ(6u + 2u + 100u * 9u, m_rig.Tree().Rows().size());
    SendMessageW(m_rig.Tree().Tree(), WM_VSCROLL, SB_BOTTOM, 0);
    PumpMessages();
    m_rig.ClickValue(L"Audio/In 99/Track Name");
    TypeText(L"the last");
    PressKey(VK_RETURN);
    PumpMessages();
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(L"the last", muxer.GetTrack(99).name.View());
    EXPECT_EQ(L"name 98", muxer.GetTrack(98).name.View());
    m_rig.Page().Deactivate();
    m_rig.Page().SetObjects(0, nullptr);
}

TEST_F(SettingsPageTest, AFilterThatClaimsMoreInputsThanItHasRowsShowsItsRows) {
    m_config.AddInputs({MuxTrackType_Video});
    m_config.inputCount = 0xFFFF;
    m_rig.Show(&m_config);
    EXPECT_EQ(7u, m_rig.Tree().Rows().size());
}

TEST_F(SettingsPageTest, AFilterThatAnswersNothingShowsCommonOnly) {
    m_config.AddInputs({MuxTrackType_Video});
    m_config.readAnswer = E_FAIL;
    m_rig.Show(&m_config);
    EXPECT_EQ((Texts{L"Common", L".DocType"}), m_rig.Tree().Rows());
}

// ---- What strict files are told ------------------------------------------------------------------------------------

// A filter with two inputs and everything set to something else than at first.
class SettingsPageOptionsTest : public SettingsPageTest {
  protected:
    SettingsPageOptionsTest() {
        m_config.AddInputs({MuxTrackType_Video, MuxTrackType_Audio});
        m_config.options.emplace();
        m_config.options->profile = MuxProfile_Strict;
        m_config.options->title = L"A film";
        m_config.options->statistics = 0;
        m_config.options->index = {0, 90LL * 60 * 10000000 - 1};
        m_config.options->flags[0] = {0, MuxFlag_On, MuxFlag_Off, MuxFlag_Unset, MuxFlag_On, MuxFlag_Off};
        m_config.options->flags[1] = {1, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset};
    }
    [[nodiscard]] Texts FlagsOf(INT32 index) const {
        const MuxTrackFlags& flags = m_config.options->flags.at(index);
        Texts texts;
        for (const BYTE flag :
             {flags.forced, flags.hearingImpaired, flags.visualImpaired, flags.original, flags.commentary}) {
            texts.push_back(std::to_wstring(flag));
        }
        return texts;
    }
};

TEST_F(SettingsPageOptionsTest, ItsEditorsShowWhatTheFilterHasAndOfferTheirChoices) {
    m_rig.Show(&m_config);
    EXPECT_EQ(PageOf({L"Video", L".In 0", L"Audio", L".In 1"}), m_rig.Tree().Rows());
    const std::pair<std::wstring, const WCHAR*> shown[] = {{L"Common/Profile", L"strict"},
                                                           {L"Common/Title", L"A film"},
                                                           {L"Common/Index in front", L"90 min"},
                                                           {L"Common/Statistics", L"False"},
                                                           {L"Video/In 0/Forced", L"yes"},
                                                           {L"Video/In 0/Hearing impaired", L"no"},
                                                           {L"Video/In 0/Visual impaired", L"unset"},
                                                           {L"Video/In 0/Original", L"yes"},
                                                           {L"Video/In 0/Commentary", L"no"}};
    for (const auto& [path, value] : shown) {
        m_rig.ClickValue(path);
        EXPECT_EQ(value, TextOf(m_rig.Tree().Editor()));
    }
    EXPECT_EQ((Texts{L"unset", L"no", L"yes"}), m_rig.Tree().EditorChoices());
    m_rig.ClickValue(L"Common/Profile");
    EXPECT_EQ((Texts{L"compatible", L"strict"}), m_rig.Tree().EditorChoices());
}

TEST_F(SettingsPageOptionsTest, ApplyingWithoutAChangeChangesNothing) {
    m_rig.Show(&m_config);
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(UINT32{MuxProfile_Strict}, m_config.options->profile);
    EXPECT_EQ(L"A film", m_config.options->title);
    EXPECT_EQ(0u, m_config.options->statistics);
    EXPECT_EQ((Texts{L"1", L"0", L"255", L"1", L"0"}), FlagsOf(0));
    EXPECT_EQ(Texts(5, L"255"), FlagsOf(1));
    EXPECT_EQ(90LL * 60 * 10000000 - 1, m_config.options->index.expectedLength);
    EXPECT_EQ(4u, m_config.optionWrites) << "title and index are not written";
}

TEST_F(SettingsPageOptionsTest, WhatIsEditedIsSetByApplyAndNotBefore) {
    m_rig.Show(&m_config);
    Choose(L"Common/Profile", L"compatible");
    TypeInto(L"Common/Title", L"Another");
    Choose(L"Common/Statistics", L"True");
    Choose(L"Video/In 0/Forced", L"no");
    Choose(L"Video/In 0/Original", L"unset");
    EXPECT_EQ(0u, m_config.optionWrites);
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(UINT32{MuxProfile_Compatible}, m_config.options->profile);
    EXPECT_EQ(L"Another", m_config.options->title);
    EXPECT_EQ(1u, m_config.options->statistics);
    EXPECT_EQ((Texts{L"0", L"0", L"255", L"255", L"0"}), FlagsOf(0));
    EXPECT_EQ(Texts(5, L"255"), FlagsOf(1));
    TypeInto(L"Common/Title", L"A film");
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(L"A film", m_config.options->title) << "as it was when the page was opened";
}

TEST_F(SettingsPageOptionsTest, TheRoomForTheIndexIsMinutesOrBytes) {
    constexpr LONGLONG kMinute = 60LL * 10000000;
    struct Case {
        const WCHAR* text;
        UINT64 bytes;
        LONGLONG length;
    };
    m_rig.Show(&m_config);
    for (const auto& [text, bytes, length] :
         {Case{L"7", 0, 7 * kMinute}, Case{L"120 min", 0, 120 * kMinute}, Case{L"4000 bytes", 4000, 0},
          Case{L"999999999", 0, 999999999 * kMinute}, Case{L"0", 0, 0}}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(text)));
        TypeInto(L"Common/Index in front", text);
        EXPECT_EQ(S_OK, Apply());
        EXPECT_EQ(bytes, m_config.options->index.bytes);
        EXPECT_EQ(length, m_config.options->index.expectedLength);
    }
    for (const WCHAR* text : {L"-1", L"1.5", L"7 hours", L" 7", L"bytes", L"7min", L"1234567890", L"min"}) {
        TypeInto(L"Common/Index in front", text);
        EXPECT_EQ(E_INVALIDARG, Apply());
        EXPECT_EQ(0, m_config.options->index.expectedLength);
    }
    m_config.options->index = {4000, 0};
    m_rig.ClickValue(L"Common/Index in front");
    PressKey(VK_DELETE); // all of the text is selected
    m_rig.ClickLabel(L"Common");
    EXPECT_EQ(S_OK, Apply());
    EXPECT_EQ(0u, m_config.options->index.bytes) << "nothing is kept";
    m_config.options->index = {4000, 0};
    m_rig.Page().Deactivate();
    ASSERT_EQ(S_OK, m_rig.Activate());
    m_rig.ClickValue(L"Common/Index in front");
    EXPECT_EQ(L"4000 bytes", TextOf(m_rig.Tree().Editor()));
}

TEST_F(SettingsPageOptionsTest, ARefusedOptionIsReportedAndTheDocTypeIsWrittenAllTheSame) {
    m_config.optionAnswer = E_INVALIDARG;
    m_rig.Show(&m_config);
    Choose(L"Common/DocType", L"webm");
    EXPECT_EQ(E_INVALIDARG, Apply());
    EXPECT_EQ(S_OK, m_rig.Page().IsPageDirty());
    EXPECT_EQ(1u, m_config.writes.back().docType);
}

TEST_F(SettingsPageTest, OptionsReachTheMuxer) {
    MuxerUnderTest muxer;
    muxer.ConnectVideo();
    m_rig.Show(muxer.Filter());
    Choose(L"Common/Profile", L"strict");
    TypeInto(L"Common/Title", L"A film");
    Choose(L"Video/In 0/Commentary", L"yes");
    EXPECT_EQ(S_OK, Apply());
    const client::ModuleConfig config(muxer.Filter());
    MuxProfile profile{};
    EXPECT_EQ(S_OK, config.GetProfile(profile));
    EXPECT_EQ(MuxProfile_Strict, profile);
    WideString title;
    EXPECT_EQ(S_OK, config.GetTitle(title));
    EXPECT_EQ(L"A film", title);
    MuxTrackFlags flags{};
    EXPECT_EQ(S_OK, config.GetFlags(0, flags));
    EXPECT_EQ(MuxFlag_On, flags.commentary);
    EXPECT_EQ(MuxFlag_Unset, flags.forced);
    m_rig.Page().Deactivate();
    m_rig.Page().SetObjects(0, nullptr);
}

// ---- Calls out of turn -------------------------------------------------------------------------------------------

TEST_F(SettingsPageTest, WithoutAnObjectItIsNeitherShownNorApplied) {
    EXPECT_EQ(E_UNEXPECTED, m_rig.Activate());
    EXPECT_EQ(nullptr, m_rig.Window());
    EXPECT_EQ(S_OK, m_rig.Page().SetPageSite(&m_rig.Site()));
    EXPECT_EQ(E_UNEXPECTED, Apply());
    EXPECT_EQ(E_UNEXPECTED, m_rig.Page().Deactivate());
}

TEST_F(SettingsPageTest, AnObjectWithoutParametersIsRefused) {
    FakePageSite noFilter;
    EXPECT_EQ(E_NOINTERFACE, m_rig.SetObject(&noFilter));
    EXPECT_EQ(E_UNEXPECTED, m_rig.Activate());
    EXPECT_EQ(0, noFilter.References());
}

TEST_F(SettingsPageTest, ASecondActivationIsRefusedAndTheFirstStays) {
    m_rig.Show(&m_config);
    EXPECT_EQ(E_UNEXPECTED, m_rig.Activate());
    EXPECT_TRUE(IsWindow(m_rig.Window()));
    EXPECT_EQ(S_OK, m_rig.Page().Deactivate());
    EXPECT_EQ(nullptr, m_rig.Window());
    EXPECT_EQ(S_OK, m_rig.Activate());
}

TEST_F(SettingsPageTest, AppliedAfterTheFilterWentAwayItFailsAndWritesNothing) {
    m_config.AddInputs({MuxTrackType_Video});
    m_rig.Show(&m_config);
    Choose(L"Common/DocType", L"webm");
    EXPECT_EQ(S_OK, m_rig.Page().SetObjects(0, nullptr));
    EXPECT_EQ(0, m_config.References());
    EXPECT_EQ(E_UNEXPECTED, Apply());
    EXPECT_EQ(S_OK, m_rig.Page().IsPageDirty());
    EXPECT_TRUE(m_config.writes.empty());
}

TEST_F(SettingsPageTest, ClosedWithAnOpenEditorItWritesNothingAndShowsTheFilterAgain) {
    m_config.AddInputs({MuxTrackType_Video});
    m_config.rows[0].name = L"stored";
    m_rig.Show(&m_config);
    m_rig.ClickValue(L"Video/In 0/Track Name");
    TypeText(L"open");
    PumpMessages();
    EXPECT_EQ(S_OK, m_rig.Page().Deactivate());
    PumpMessages();
    EXPECT_TRUE(m_config.writes.empty());
    EXPECT_EQ(S_OK, Apply()) << "nothing is shown, and nothing was changed";
    EXPECT_TRUE(m_config.writes.empty());
    EXPECT_EQ(S_OK, m_rig.Activate());
    m_rig.ClickValue(L"Video/In 0/Track Name");
    EXPECT_EQ(L"stored", TextOf(m_rig.Tree().Editor()));
}

TEST_F(SettingsPageTest, EditsThatWentWithTheWindowCannotBeAppliedAnyMore) {
    m_rig.Show(&m_config);
    Choose(L"Common/DocType", L"webm");
    EXPECT_EQ(S_OK, m_rig.Page().Deactivate());
    EXPECT_EQ(E_UNEXPECTED, Apply());
    EXPECT_TRUE(m_config.writes.empty());
    EXPECT_EQ(S_OK, m_rig.Activate());
    EXPECT_EQ(S_FALSE, m_rig.Page().IsPageDirty()) << "it shows the filter again";
}

TEST_F(SettingsPageTest, ItsHostMayDestroyTheWindowWithAnOpenListEditor) {
    m_config.AddInputs({MuxTrackType_Video});
    m_rig.Show(&m_config);
    m_rig.ClickValue(L"Video/In 0/Track Language");
    SendMessageW(m_rig.Tree().Editor(), CB_SHOWDROPDOWN, TRUE, 0);
    PumpMessages();
    m_rig.CloseHost();
    EXPECT_EQ(E_UNEXPECTED, m_rig.Page().Deactivate());
    EXPECT_EQ(S_OK, Apply()) << "nothing is shown, and nothing was changed";
    EXPECT_TRUE(m_config.writes.empty());
}

TEST_F(SettingsPageTest, ReleasedWhileItIsShownItTakesItsWindowAlong) {
    LoadedModule module;
    HostDialog host;
    win::ComPtr<IPropertyPage> page;
    ASSERT_EQ(S_OK,
              module.Factory(CLSID_MKVMuxerPropertyPage)->CreateInstance(nullptr, IID_IPropertyPage, page.PutVoid()));
    IUnknown* object = &m_config;
    ASSERT_EQ(S_OK, page->SetObjects(1, &object));
    const RECT area = host.PageArea();
    ASSERT_EQ(S_OK, page->Activate(host.Window(), &area, FALSE));
    EXPECT_EQ(0u, page.Detach()->Release());
    EXPECT_EQ(nullptr, FindWindowExW(host.Window(), nullptr, L"#32770", nullptr));
    EXPECT_EQ(0, m_config.References());
}

TEST_F(SettingsPageTest, TheTreeFollowsThePagesSize) {
    m_rig.Show(&m_config);
    RECT area = m_rig.Host().PageArea();
    area.right -= 60;
    area.bottom -= 40;
    EXPECT_EQ(S_OK, m_rig.Page().Move(&area));
    PumpMessages();
    RECT tree{};
    GetWindowRect(m_rig.Tree().Tree(), &tree);
    EXPECT_EQ(area.right - area.left, tree.right - tree.left);
    RECT page{};
    GetWindowRect(m_rig.Window(), &page);
    EXPECT_EQ(page.bottom, tree.bottom);
}

TEST_F(SettingsPageTest, APageLargerThanItsFrameStaysInSight) {
    m_rig.Show(&m_config);
    RECT area = m_rig.Host().PageArea();
    area.right += 500;
    area.bottom += 500;
    EXPECT_EQ(S_OK, m_rig.Page().Move(&area));
    PumpMessages();
    RECT frame{};
    GetClientRect(m_rig.Host().Window(), &frame);
    MapWindowPoints(m_rig.Host().Window(), nullptr, reinterpret_cast<POINT*>(&frame), 2);
    RECT tree{};
    GetWindowRect(m_rig.Tree().Tree(), &tree);
    EXPECT_EQ(frame.right, tree.right);
    EXPECT_EQ(frame.bottom, tree.bottom);
}

} // namespace
