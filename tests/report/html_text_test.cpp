#include "report/html_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace report {
namespace {

TEST(HtmlText, TextsOfAFileAreTextWhereverTheyStand) {
    EXPECT_EQ("&lt;script&gt;alert(&#39;x&#39;)&lt;/script&gt;", Escaped("<script>alert('x')</script>"));
    EXPECT_EQ("&quot; onload=&quot;", Escaped("\" onload=\""));
    EXPECT_EQ("a &amp;lt; b", Escaped("a &lt; b"));
    EXPECT_EQ("a?b", Escaped("a\nb"));
    EXPECT_EQ("?", Escaped("\xff"));
    EXPECT_EQ("naïve 日本", Escaped("naïve 日本"));
}

TEST(HtmlText, BytesAndRatesHaveTheUnitThatSuitsThem) {
    EXPECT_EQ("0 bytes", BytesText(0));
    EXPECT_EQ("999 bytes", BytesText(999));
    EXPECT_EQ("1.0 kB", BytesText(1000));
    EXPECT_EQ("42.9 GB", BytesText(UINT64{40} << 30));
    EXPECT_EQ("128.0 kbit/s", RateText(128000));
}

TEST(HtmlText, NumbersAreGroupedAndTimesHaveHours) {
    EXPECT_EQ("0", CountText(0));
    EXPECT_EQ("999", CountText(999));
    EXPECT_EQ("1\u202f234\u202f567", CountText(1234567));
    EXPECT_EQ("0:00:00.000", TimeText(0));
    EXPECT_EQ("26:03:04.005", TimeText(93784005000000));
}

TEST(HtmlText, DatesCountFromTheYear2001) {
    EXPECT_EQ("2001-01-01 00:00:00 UTC", DateText(0));
    EXPECT_EQ("2000-12-31 23:59:59 UTC", DateText(-1));
    EXPECT_EQ("2024-02-29 12:34:56 UTC", DateText(730902896000000000));
    EXPECT_EQ("2293-04-11 23:47:16 UTC", DateText(std::numeric_limits<INT64>::max()));
    EXPECT_EQ("1708-09-22 00:12:43 UTC", DateText(std::numeric_limits<INT64>::min()));
}

} // namespace
} // namespace report
