// Shows one scene of the property pages and waits until its standard input ends: for pictures of them.
#include <initguid.h>

#include <qrx_mkvmuxer.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tests/ui/muxer_under_test.h"
#include "tests/ui/property_frame.h"

using namespace ui_test;

namespace {

void ConnectThreeKinds(MuxerUnderTest& muxer) {
    muxer.ConnectVideo();
    muxer.ConnectAudio();
    muxer.ConnectSubtitles();
    muxer.SetTrack({0, 1, 0, 0, win::Bstr(L"English"), win::Bstr(L"Main camera")});
    muxer.SetTrack({1, 1, 1, 0, win::Bstr(L"German"), win::Bstr(L"Commentary & interviews, recorded in the stadium")});
    muxer.SetTrack({2, 0, 0, 0, win::Bstr(L"French"), win::Bstr(L"")});
}

// Each step waits for what comes of it.
void OpenEditor(const TreeDriver& tree, const std::wstring& path) {
    tree.ClickValue(path);
    EXPECT_TRUE(WaitUntil([&] { return tree.Selected() == tree.Find(path) && tree.Editor() != nullptr; }));
    EXPECT_TRUE(WaitForFocus(tree.Editor()));
}

void OpenList(const TreeDriver& tree, const std::wstring& path) {
    OpenEditor(tree, path);
    PressKey(VK_F4);
    EXPECT_TRUE(WaitUntil([&] { return SendMessageW(tree.Editor(), CB_GETDROPPEDSTATE, 0, 0) != FALSE; }));
}

void Scroll(const TreeDriver& tree, int notches) {
    const HTREEITEM common = tree.Find(L"Common");
    const LONG before = tree.RowOf(common).top;
    TurnWheel(tree.Tree(), {10, 10}, notches);
    EXPECT_TRUE(WaitUntil([&] { return tree.RowOf(common).top != before; }));
}

void Prepare(const std::string& scene, PropertyFrame& frame) {
    if (scene == "about") {
        frame.ShowPage(L"About");
        return;
    }
    frame.ShowPage(L"Settings");
    const TreeDriver tree = frame.Tree();
    if (scene == "list") {
        OpenList(tree, L"Audio/In 1/Track Language");
    } else if (scene == "choices") {
        OpenList(tree, L"Common/DocType");
    } else if (scene == "scrolled") {
        Scroll(tree, -4);
        OpenEditor(tree, L"Audio/In 5/Track Name");
        TypeText(L"Interpreter, booth 5");
        EXPECT_TRUE(WaitUntil([&] { return TextOf(tree.Editor()) == L"Interpreter, booth 5"; }));
        Scroll(tree, -1);
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::string scene = argc > 1 ? argv[1] : "";
    testing::InitGoogleTest(&argc, argv);
    SetProcessDPIAware();
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    {
        MuxerUnderTest muxer;
        if (scene == "tracks" || scene == "list" || scene == "choices") {
            ConnectThreeKinds(muxer);
        } else if (scene == "scrolled") {
            muxer.ConnectVideo();
            for (int input = 1; input < 9; ++input) {
                muxer.ConnectAudio();
            }
        }
        PropertyFrame frame(muxer.Filter());
        Prepare(scene, frame);
        frame.Paint();
        std::puts("ready");
        std::fflush(stdout);
        while (std::getchar() != EOF) {
        }
        PressKey(VK_ESCAPE);
        PressKey(VK_ESCAPE);
    }
    CoUninitialize();
    return testing::Test::HasFailure() ? 1 : 0;
}
