// The page itself: all in one file, nothing that runs, nothing that the file could put into it.
#include "report/page.h"

#include <gtest/gtest.h>

#include "report/file_survey.h"
#include "tests/sources/base/memory_source.h"
#include "tests/sources/matroska/matroska_builder.h"

namespace report {
namespace {

using namespace test_matroska;
using test_support::RawText;
using test_support::RawUnsigned;

FileFacts Survey(const RawBytes& file) {
    const test_source::MemorySource source(std::vector<BYTE>(file.begin(), file.end()));
    return FileSurvey(source, [](UINT64, UINT64) {}).Read();
}

size_t CountOf(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

constexpr const char* kHostile = "</title><script>alert(1)</script><img src=x onerror='alert(2)'>\"";

TEST(Page, TextsOfTheFileRunNothing) {
    const FileFacts facts =
        Survey(FileOf({TrackEntry(1, 1, kHostile, {RawText(id::kName, kHostile), RawText(id::kLanguage, kHostile)})},
                      {Master(id::kInfo, {RawText(id::kTitle, kHostile), RawText(id::kMuxingApp, kHostile),
                                          RawText(id::kWritingApp, kHostile)}),
                       Cluster(0, {SimpleBlock(1, 0, kKeyframe, "x")})}));
    const std::string page = PageOf(facts, kHostile);
    EXPECT_EQ(std::string::npos, page.find("<script"));
    EXPECT_EQ(std::string::npos, page.find("<img"));
    EXPECT_EQ(std::string::npos, page.find("alert('"));
    EXPECT_EQ(1u, CountOf(page, "</title>\n<style>")); // that of the page; the pictures have their own
    EXPECT_GE(CountOf(page, "&lt;script&gt;"), 7u);
}

TEST(Page, NothingIsFetchedAndNothingMayRun) {
    const std::string page = PageOf(Survey(RichFile()), "rich.mkv");
    EXPECT_NE(std::string::npos, page.find("default-src 'none'"));
    for (const char* part : {"http:", "https:", "src=", "href=", "url(", "@import", "javascript"}) {
        EXPECT_EQ(std::string::npos, page.find(part)) << part;
    }
    EXPECT_NE(std::string::npos, page.find("prefers-color-scheme: dark"));
}

TEST(Page, EveryElementThatIsOpenedIsClosed) {
    const std::string page = PageOf(Survey(RichFile()), "rich.mkv");
    for (const char* name :
         {"svg", "div", "ul", "li", "details", "summary", "table", "tr", "td", "title", "span", "dl"}) {
        const std::string opening = "<" + std::string(name);
        EXPECT_EQ(CountOf(page, opening + ">") + CountOf(page, opening + " "),
                  CountOf(page, "</" + std::string(name) + ">"))
            << name;
    }
}

TEST(Page, TheTimeLineShowsTracksKeyframesCuesAndPauses) {
    const auto pictures = [](uint64_t ticks) {
        return Cluster(ticks, {SimpleBlock(1, 0, kKeyframe, "key"), SimpleBlock(1, 40, 0, "other")});
    };
    const FileFacts facts = Survey(FileOf(
        {TrackEntry(1, 1, "V_VP8")}, {pictures(0), pictures(80), pictures(4000),
                                      Master(id::kCues, {Master(id::kCuePoint, {RawUnsigned(id::kCueTime, 80)})})}));
    const std::string page = PageOf(facts, "a.mkv");
    EXPECT_EQ(1u, CountOf(page, "class=\"rate c0\""));
    EXPECT_EQ(1u, CountOf(page, "class=\"mark key\""));
    EXPECT_EQ(1u, CountOf(page, "class=\"mark cue\""));
    EXPECT_EQ(1u, CountOf(page, "class=\"mark cluster\""));
    EXPECT_EQ(1u, CountOf(page, "class=\"gap\""));
    EXPECT_NE(std::string::npos, page.find("nothing from 0:00:00.120 to 0:00:04.000"));
    EXPECT_EQ(facts.timeline.Cells(), CountOf(page, "class=\"pointer\""));
    EXPECT_EQ(std::string::npos, page.find("id=\"damage\""));
}

TEST(Page, DamageIsToldWithItsBytes) {
    RawBytes file = RichFile();
    file.resize(file.size() - 10);
    const FileFacts facts = Survey(file);
    const std::string page = PageOf(facts, "cut.mkv");
    EXPECT_NE(std::string::npos, page.find("id=\"damage\""));
    EXPECT_NE(std::string::npos, page.find("it was cut off"));
}

TEST(Page, AFileWithoutATrackHasOneToo) {
    const std::string page = PageOf(Survey(FileOf({}, {})), "empty.mkv");
    EXPECT_NE(std::string::npos, page.find("</html>"));
    EXPECT_NE(std::string::npos, page.find("id=\"timeline\""));
}

} // namespace
} // namespace report
