// The codecs that WebM takes, and all others of the codec table.
#include "media/webm_subset.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "media/codec_table.h"

namespace {

TEST(WebmSubset, OfTheCodecTableFourCodecsAreWebms) {
    std::set<std::string> taken;
    for (const media::CodecRow& row : media::CodecTable()) {
        if (media::IsInWebmSubset(row.codecId)) {
            taken.insert(row.codecId);
        }
    }
    EXPECT_EQ(taken, (std::set<std::string>{"A_OPUS", "A_VORBIS", "V_VP8", "V_VP9"}));
}

TEST(WebmSubset, AnIdentifierIsTakenAsAWhole) {
    EXPECT_TRUE(media::IsInWebmSubset("V_AV1"));
    EXPECT_TRUE(media::IsInWebmSubset("D_WEBVTT/SUBTITLES"));
    for (const char* other : {"", "V_VP", "V_VP80", "v_vp8", "D_WEBVTT", "S_TEXT/WEBVTT", "A_OPUS/EXPERIMENTAL"}) {
        EXPECT_FALSE(media::IsInWebmSubset(other)) << other;
    }
}

} // namespace
