// Both pages in the system's property frame, from the registered module to the file that a run then writes.
#include <gtest/gtest.h>

#include "tests/support/matroska_layout.h"
#include "tests/support/written_files.h"
#include "tests/ui/muxer_under_test.h"
#include "tests/ui/property_frame.h"

using namespace test_support;
using namespace ui_test;

namespace {

class PropertyFrameTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    static void TearDownTestSuite() { CoUninitialize(); }

    static void Open(const TreeDriver& tree, const std::wstring& path) {
        tree.ClickValue(path);
        const HTREEITEM item = tree.Find(path);
        ASSERT_TRUE(WaitUntil([&] { return tree.Selected() == item && tree.Editor() != nullptr; }));
        ASSERT_TRUE(WaitForFocus(tree.Editor()));
    }
    // Keys come behind what is sent to the frame's thread: the edit is stored when the tree has them again.
    static void TakeOver(const TreeDriver& tree) {
        PressKey(VK_RETURN);
        ASSERT_TRUE(WaitForFocus(tree.Tree()));
    }
    static void TypeInto(const TreeDriver& tree, const std::wstring& path, const std::wstring& text) {
        Open(tree, path);
        TypeText(text);
        ASSERT_TRUE(WaitUntil([&] { return TextOf(tree.Editor()) == text; }));
        TakeOver(tree);
    }
    static void Choose(const TreeDriver& tree, const std::wstring& path, const std::wstring& choice) {
        Open(tree, path);
        tree.ChooseWithKeys(choice);
        TakeOver(tree);
    }
};

TEST_F(PropertyFrameTest, ItsPagesAreAboutAndSettingsInThisOrder) {
    MuxerUnderTest muxer;
    PropertyFrame frame(muxer.Filter());
    EXPECT_EQ((std::vector<std::wstring>{L"About", L"Settings"}), frame.Titles());
    EXPECT_FALSE(IsWindowEnabled(frame.Button(PropertyFrame::kApplyButton)));
}

TEST_F(PropertyFrameTest, NameLanguageAndDocTypeReachTheFileThatARunThenWrites) {
    MuxerUnderTest muxer;
    muxer.ConnectVideo();
    muxer.ConnectAudio();
    {
        PropertyFrame frame(muxer.Filter());
        frame.ShowPage(L"Settings");
        const TreeDriver tree = frame.Tree();
        TypeInto(tree, L"Audio/In 1/Track Name", L"Commentary \x2603");
        Choose(tree, L"Audio/In 1/Track Language", L"Swedish");
        Choose(tree, L"Common/DocType", L"webm");
        EXPECT_EQ(MuxDocType_Matroska, muxer.DocType()) << "nothing is written before Apply";
        frame.Apply();
        EXPECT_TRUE(WaitUntil([&] { return muxer.DocType() == MuxDocType_Webm; }));
        frame.Click(IDOK);
        EXPECT_EQ(S_OK, frame.WaitForEnd());
    }
    const auto bytes = muxer.WriteFile();
    const auto layout = ReadLayout(bytes);
    EXPECT_EQ("webm", layout.docType);
    ASSERT_EQ(2u, layout.tracks.size());
    EXPECT_EQ("Commentary \xE2\x98\x83", layout.tracks[1].name);
    EXPECT_EQ("swe", layout.tracks[1].language);
    EXPECT_EQ(std::nullopt, layout.tracks[0].language) << "English need not be written";
    SaveForJudges("settings_page.mkv", bytes);
}

TEST_F(PropertyFrameTest, CancelWritesNothing) {
    MuxerUnderTest muxer;
    {
        PropertyFrame frame(muxer.Filter());
        frame.ShowPage(L"Settings");
        Choose(frame.Tree(), L"Common/DocType", L"webm");
        frame.Click(IDCANCEL);
        frame.WaitForEnd();
    }
    EXPECT_EQ(MuxDocType_Matroska, muxer.DocType());
}

TEST_F(PropertyFrameTest, OkOnAPageThatWasNeverShownClosesTheFrameAndChangesNothing) {
    MuxerUnderTest muxer;
    muxer.ConnectVideo();
    muxer.SetDocType(MuxDocType_Webm);
    muxer.SetTrack({0, 0, 1, 9, win::Bstr(L"Elvish"), win::Bstr(L"as it was")});
    PropertyFrame frame(muxer.Filter());
    frame.Click(IDOK);
    EXPECT_EQ(S_OK, frame.WaitForEnd());
    EXPECT_EQ(MuxDocType_Webm, muxer.DocType());
    EXPECT_EQ(L"Elvish", muxer.GetTrack(0).language.View());
    EXPECT_EQ(9, muxer.GetTrack(0).reserved);
}

TEST_F(PropertyFrameTest, EditsSurviveALookAtTheOtherPage) {
    MuxerUnderTest muxer;
    PropertyFrame frame(muxer.Filter());
    frame.ShowPage(L"Settings");
    Choose(frame.Tree(), L"Common/DocType", L"webm");
    frame.ShowPage(L"About");
    frame.ShowPage(L"Settings");
    frame.Apply();
    EXPECT_TRUE(WaitUntil([&] { return muxer.DocType() == MuxDocType_Webm; }));
}

TEST_F(PropertyFrameTest, ClosedWithAnOpenEditorItLeavesTheFilterAsItWas) {
    MuxerUnderTest muxer;
    muxer.ConnectVideo();
    PropertyFrame frame(muxer.Filter());
    frame.ShowPage(L"Settings");
    frame.Tree().ClickValue(L"Video/In 0/Track Language");
    ASSERT_TRUE(WaitUntil([&] { return frame.Tree().Editor() != nullptr; }));
    frame.Click(IDCANCEL);
    frame.WaitForEnd();
    EXPECT_EQ(L"English", muxer.GetTrack(0).language.View());
}

TEST_F(PropertyFrameTest, TheTreeFillsThePageAndNothingMore) {
    MuxerUnderTest muxer;
    PropertyFrame frame(muxer.Filter());
    frame.ShowPage(L"Settings");
    const HWND tree = frame.Tree().Tree();
    const HWND sheetPage = GetParent(GetParent(tree));
    EXPECT_TRUE(WaitUntil([&] {
        RECT page{};
        GetWindowRect(sheetPage, &page);
        RECT area{};
        GetWindowRect(tree, &area);
        return area.right == page.right && area.bottom == page.bottom;
    }));
}

} // namespace
