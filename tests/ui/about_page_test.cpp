// The about page of the built module, and what every page has from its base class.
#include <gtest/gtest.h>

#include <qrx_mkvmuxer.h>

#include <vector>

#include "tests/ui/page_rig.h"

using namespace ui_test;

namespace {

constexpr int kProductName = 1001;
constexpr int kVersion = 1002;
constexpr int kPicture = 1003;

class AboutPageTest : public testing::Test {
  protected:
    [[nodiscard]] HWND Control(int id) const { return GetDlgItem(m_rig.Window(), id); }

    FakePageSite m_object; // any object will do
    PageRig m_rig{CLSID_MKVMuxerAboutPage};
};

TEST_F(AboutPageTest, NamesTheProductAndTheModulesVersion) {
    m_rig.Show(&m_object);
    EXPECT_EQ(L"Quorlex Matroska Muxer", TextOf(Control(kProductName)));
    const std::string version = "Version " QRX_VERSION;
    EXPECT_EQ(std::wstring(version.begin(), version.end()), TextOf(Control(kVersion)));
}

TEST_F(AboutPageTest, ShowsAPictureOfItsControlsSize) {
    m_rig.Show(&m_object);
    const auto icon = reinterpret_cast<HICON>(SendMessageW(Control(kPicture), STM_GETICON, 0, 0));
    ICONINFO info{};
    ASSERT_TRUE(GetIconInfo(icon, &info));
    BITMAP picture{};
    GetObjectW(info.hbmColor, sizeof(picture), &picture);
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
    RECT control{};
    GetClientRect(Control(kPicture), &control);
    EXPECT_EQ(std::min(control.right, control.bottom), picture.bmWidth);
}

// A text that needs more room than its control has is cut off.
bool IsClipped(HWND control) {
    const std::wstring text = TextOf(control);
    RECT room{};
    GetClientRect(control, &room);
    RECT needed{0, 0, room.right, 0};
    const HDC dc = GetDC(control);
    const HGDIOBJ font = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)));
    DrawTextW(dc, text.c_str(), -1, &needed, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    SelectObject(dc, font);
    ReleaseDC(control, dc);
    return needed.right > room.right || needed.bottom > room.bottom;
}

TEST_F(AboutPageTest, ItsTextsReachToTheEdgeAndAreNotClipped) {
    m_rig.Show(&m_object);
    RECT page{};
    GetWindowRect(m_rig.Window(), &page);
    RECT picture{};
    GetWindowRect(Control(kPicture), &picture);
    for (HWND text = Control(kProductName); text != nullptr; text = GetWindow(text, GW_HWNDNEXT)) {
        EXPECT_FALSE(IsClipped(text));
        RECT area{};
        GetWindowRect(text, &area);
        EXPECT_EQ(picture.left - page.left, page.right - area.right);
    }
}

TEST_F(AboutPageTest, ItsTextsFollowThePagesSize) {
    m_rig.Show(&m_object);
    RECT before{};
    GetWindowRect(Control(kProductName), &before);
    RECT area = m_rig.Host().PageArea();
    area.right -= 50;
    EXPECT_EQ(S_OK, m_rig.Page().Move(&area));
    RECT after{};
    GetWindowRect(Control(kProductName), &after);
    EXPECT_EQ(before.right - 50, after.right);
    EXPECT_EQ(before.left, after.left);
}

// ---- The base class ----------------------------------------------------------------------------------------------

TEST_F(AboutPageTest, PageInfoIsTheTitleAndTheDialogsSize) {
    PROPPAGEINFO info{};
    ASSERT_EQ(S_OK, m_rig.Page().GetPageInfo(&info));
    EXPECT_STREQ(L"About", info.pszTitle);
    CoTaskMemFree(info.pszTitle);
    EXPECT_EQ(sizeof(info), info.cb);
    EXPECT_EQ(nullptr, info.pszDocString);
    EXPECT_EQ(nullptr, info.pszHelpFile);
    RECT template252x218{0, 0, 252, 218};
    ASSERT_TRUE(MapDialogRect(m_rig.Host().Window(), &template252x218)); // the host has the pages' font
    EXPECT_EQ(template252x218.right, info.size.cx);
    EXPECT_EQ(template252x218.bottom, info.size.cy);
    EXPECT_EQ(E_POINTER, m_rig.Page().GetPageInfo(nullptr));
}

TEST_F(AboutPageTest, ASecondSiteOrNoneToLetGoOfIsUnexpected) {
    EXPECT_EQ(E_UNEXPECTED, m_rig.Page().SetPageSite(nullptr));
    EXPECT_EQ(S_OK, m_rig.Page().SetPageSite(&m_rig.Site()));
    EXPECT_EQ(E_UNEXPECTED, m_rig.Page().SetPageSite(&m_rig.Site()));
    EXPECT_EQ(1, m_rig.Site().References());
    EXPECT_EQ(S_OK, m_rig.Page().SetPageSite(nullptr));
    EXPECT_EQ(0, m_rig.Site().References());
}

TEST_F(AboutPageTest, TakesOneObject) {
    IUnknown* two[] = {&m_object, &m_object};
    EXPECT_EQ(E_UNEXPECTED, m_rig.Page().SetObjects(2, two));
    EXPECT_EQ(E_POINTER, m_rig.Page().SetObjects(1, nullptr));
    IUnknown* none = nullptr;
    EXPECT_EQ(E_POINTER, m_rig.Page().SetObjects(1, &none));
    EXPECT_EQ(S_OK, m_rig.Page().SetObjects(1, two));
    EXPECT_EQ(S_OK, m_rig.Page().SetObjects(0, nullptr));
    EXPECT_EQ(E_UNEXPECTED, m_rig.Activate());
}

TEST_F(AboutPageTest, MovesAndShowsOnlyWhileItIsActive) {
    const RECT area = m_rig.Host().PageArea();
    EXPECT_EQ(E_UNEXPECTED, m_rig.Page().Move(&area));
    EXPECT_EQ(E_UNEXPECTED, m_rig.Page().Show(SW_SHOW));
    EXPECT_EQ(S_OK, m_rig.SetObject(&m_object));
    EXPECT_EQ(E_POINTER, m_rig.Page().Activate(m_rig.Host().Window(), nullptr, FALSE));
    EXPECT_EQ(S_OK, m_rig.Activate());
    EXPECT_TRUE(IsWindowVisible(m_rig.Window()));
    EXPECT_EQ(S_OK, m_rig.Page().Show(SW_HIDE));
    EXPECT_FALSE(IsWindowVisible(m_rig.Window()));
    EXPECT_EQ(S_OK, m_rig.Page().Show(SW_SHOW));
    EXPECT_TRUE(IsWindowVisible(m_rig.Window()));
    EXPECT_EQ(E_INVALIDARG, m_rig.Page().Show(SW_MAXIMIZE));
    EXPECT_EQ(E_POINTER, m_rig.Page().Move(nullptr));
    RECT window{};
    GetWindowRect(m_rig.Window(), &window);
    MapWindowPoints(nullptr, m_rig.Host().Window(), reinterpret_cast<POINT*>(&window), 2);
    EXPECT_TRUE(EqualRect(&area, &window));
}

TEST_F(AboutPageTest, ACleanPageAppliesNothingAndHasNoHelpOrKeysOfItsOwn) {
    m_rig.Show(&m_object);
    EXPECT_EQ(S_FALSE, m_rig.Page().IsPageDirty());
    EXPECT_EQ(S_OK, m_rig.Page().Apply());
    MSG message{};
    EXPECT_EQ(E_NOTIMPL, m_rig.Page().TranslateAccelerator(&message));
    EXPECT_EQ(E_NOTIMPL, m_rig.Page().Help(nullptr));
}

TEST_F(AboutPageTest, AFrameThatClearsTheTabStyleDoesNotKeepTheKeysFromItsControls) {
    m_rig.Show(&m_object);
    const LONG_PTR style = GetWindowLongPtrW(m_rig.Window(), GWL_EXSTYLE);
    SetWindowLongPtrW(m_rig.Window(), GWL_EXSTYLE, style & ~static_cast<LONG_PTR>(WS_EX_CONTROLPARENT));
    EXPECT_NE(0, GetWindowLongPtrW(m_rig.Window(), GWL_EXSTYLE) & WS_EX_CONTROLPARENT);
}

} // namespace
