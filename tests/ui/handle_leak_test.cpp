// A hundred openings leave no GDI object and no user object behind.
#include <gtest/gtest.h>

#include <qrx_mkvmuxer.h>

#include <memory>
#include <vector>

#include "tests/client/fake_module_config.h"
#include "tests/ui/handle_census.h"
#include "tests/ui/page_rig.h"

using namespace ui_test;

namespace {

constexpr int kOpenings = 100;

void OpenEveryEditorAndClose(PageRig& rig) {
    ASSERT_EQ(S_OK, rig.Activate());
    const TreeDriver tree = rig.Tree();
    for (const WCHAR* path : {L"Common/DocType", L"Video/In 0/Track Name", L"Video/In 0/Track Language"}) {
        SendMessageW(tree.Tree(), TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(tree.Find(path)));
        ASSERT_NE(nullptr, tree.Editor());
    }
    UpdateWindow(tree.Tree());
    ASSERT_EQ(S_OK, rig.Page().Deactivate());
}

TEST(HandleCensusTest, FindsWhatStaysBehind) {
    const HandleCensus before = HandleCensus::Take();
    std::vector<HBRUSH> brushes;
    std::vector<HWND> windows;
    for (COLORREF color = 0; color < 20; ++color) {
        brushes.push_back(CreateSolidBrush(color));
        windows.push_back(
            CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
    }
    const HandleCensus during = HandleCensus::Take();
    EXPECT_GE(during.gdiObjects, before.gdiObjects + 20);
    EXPECT_GE(during.userObjects, before.userObjects + 20);
    std::for_each(brushes.begin(), brushes.end(), DeleteObject);
    std::for_each(windows.begin(), windows.end(), DestroyWindow);
    const HandleCensus after = HandleCensus::Take();
    EXPECT_EQ(before.gdiObjects, after.gdiObjects);
    EXPECT_EQ(before.userObjects, after.userObjects);
}

TEST(HandleLeakTest, AHundredOpeningsOfTheSettingsPageWithItsEditorsLeaveNothing) {
    test_client::FakeModuleConfig config;
    config.AddInputs({MuxTrackType_Video, MuxTrackType_Audio, MuxTrackType_Subtitle});
    PageRig rig(CLSID_MKVMuxerPropertyPage);
    ASSERT_EQ(S_OK, rig.SetObject(&config));
    OpenEveryEditorAndClose(rig); // what the system keeps for good, it makes now
    const HandleCensus before = HandleCensus::Take();
    for (int opening = 0; opening < kOpenings; ++opening) {
        OpenEveryEditorAndClose(rig);
    }
    const HandleCensus after = HandleCensus::Take();
    EXPECT_EQ(before.gdiObjects, after.gdiObjects);
    EXPECT_EQ(before.userObjects, after.userObjects);
}

TEST(HandleLeakTest, AHundredOpeningsOfTheAboutPageLeaveNothing) {
    FakePageSite object;
    PageRig rig(CLSID_MKVMuxerAboutPage);
    ASSERT_EQ(S_OK, rig.SetObject(&object));
    const auto openAndClose = [&rig] {
        ASSERT_EQ(S_OK, rig.Activate());
        UpdateWindow(rig.Window());
        ASSERT_EQ(S_OK, rig.Page().Deactivate());
    };
    openAndClose();
    const HandleCensus before = HandleCensus::Take();
    for (int opening = 0; opening < kOpenings; ++opening) {
        openAndClose();
    }
    const HandleCensus after = HandleCensus::Take();
    EXPECT_EQ(before.gdiObjects, after.gdiObjects);
    EXPECT_EQ(before.userObjects, after.userObjects);
}

} // namespace
