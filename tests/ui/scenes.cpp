// Shows one scene of the property pages and waits until its standard input ends: for pictures of them.
#include <initguid.h>

#include <qrx_mkvmuxer.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <thread>

#include "tests/ui/muxer_under_test.h"
#include "tests/ui/property_frame.h"

using namespace ui_test;

namespace {

constexpr auto kTimeToPaint = std::chrono::milliseconds(400);

void Settle() {
    std::this_thread::sleep_for(kTimeToPaint);
}

void ConnectThreeKinds(MuxerUnderTest& muxer) {
    muxer.ConnectVideo();
    muxer.ConnectAudio();
    muxer.ConnectSubtitles();
    muxer.SetTrack(0, {1, 0, 0, L"English", L"Main camera"});
    muxer.SetTrack(1, {1, 1, 0, L"German", L"Commentary & interviews, recorded in the stadium"});
    muxer.SetTrack(2, {0, 0, 0, L"French", L""});
}

void Prepare(const std::string& scene, PropertyFrame& frame) {
    if (scene == "about") {
        frame.ShowPage(L"About");
        return;
    }
    frame.ShowPage(L"Settings");
    Settle();
    if (scene == "list") {
        frame.Tree().ClickValue(L"Audio/In 1/Track Language");
        Settle();
        PressKey(VK_F4);
    } else if (scene == "scrolled") {
        const TreeDriver tree = frame.Tree();
        TurnWheel(tree.Tree(), {10, 10}, -4);
        Settle();
        tree.ClickValue(L"Audio/In 5/Track Name");
        Settle();
        TypeText(L"Interpreter, booth 5");
        Settle();
        TurnWheel(tree.Tree(), {10, 10}, -1);
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
        if (scene == "tracks" || scene == "list") {
            ConnectThreeKinds(muxer);
        } else if (scene == "scrolled") {
            muxer.ConnectVideo();
            for (int input = 1; input < 9; ++input) {
                muxer.ConnectAudio();
            }
        }
        PropertyFrame frame(muxer.Filter());
        Prepare(scene, frame);
        Settle();
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
