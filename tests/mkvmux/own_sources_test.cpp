#include "mkvmux/own_sources.h"

#include <gtest/gtest.h>

#include "tests/mkvmux/com_test.h"
#include "tests/mkvmux/temporary_file.h"

namespace mkvmux {
namespace {

std::string NameFor(const wchar_t* path) {
    const OwnSource* const source = OwnSourceFor(path);
    return source == nullptr ? "none" : source->name;
}

TEST(OwnSources, AreChosenByTheEndOfTheNameInAnyCase) {
    for (const wchar_t* const path : {L"a.mkv", L"C:\\x.y\\a.MKV", L"a.webm", L"a.mka", L"a.mks"}) {
        EXPECT_EQ(NameFor(path), "Matroska");
    }
    for (const wchar_t* const path : {L"a.h264", L"a.264", L"a.avc"}) {
        EXPECT_EQ(NameFor(path), "H.264");
    }
    for (const wchar_t* const path : {L"a.h265", L"a.265", L"a.Hevc"}) {
        EXPECT_EQ(NameFor(path), "H.265");
    }
    EXPECT_EQ(NameFor(L"a.ivf"), "IVF");
    EXPECT_EQ(NameFor(L"a.obu"), "AV1");
    EXPECT_EQ(NameFor(L"a.av1"), "AV1");
    EXPECT_EQ(NameFor(L"a.srt"), "SubRip");
    EXPECT_EQ(NameFor(L"a.ass"), "ASS");
    EXPECT_EQ(NameFor(L"a.ssa"), "ASS");
}

TEST(OwnSources, LeaveEverythingElseToTheSystem) {
    for (const wchar_t* const path : {L"a.avi", L"a.wav", L"a.mp4", L"mkv", L"a.mkv.txt", L""}) {
        EXPECT_EQ(NameFor(path), "none");
    }
    EXPECT_STREQ(OwnAviSource().name, "AVI");
}

class OwnSourcesTest : public test_mkvmux::ComTest {};

TEST_F(OwnSourcesTest, TakeTheFrameRateOfRawVideoFromTheOptions) {
    // An SPS, a PPS and one IDR slice: one picture of H.264.
    const test_mkvmux::TemporaryFile file(L".h264");
    file.SetContent(std::string("\0\0\0\1\x67\x64\0\x0b\xac\xd9\x42\xc4\xec\x04\x40\0\0\3\0\x40\0\0\x0c\x83\xc5\x0a\x65"
                                "\x80\0\0\0\1\x68\xeb\xe3\xcb\x22\xc0\0\0\0\1\x65\x88\x84\0\x33\xff",
                                47));
    OwnSourceOptions options;
    options.frameRate = {50, 1};
    source::OpenedSource opened;
    ASSERT_EQ(OwnSourceFor(file.Path())->open(file.Path(), options, opened), S_OK);
    ASSERT_EQ(opened.streams.size(), 1u);
    const CMediaType& type = opened.streams[0].types.at(0);
    EXPECT_EQ(type.formattype, FORMAT_MPEG2Video);
    EXPECT_EQ(reinterpret_cast<const VIDEOINFOHEADER2*>(type.pbFormat)->AvgTimePerFrame, 200'000);
}

} // namespace
} // namespace mkvmux
