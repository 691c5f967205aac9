#include "matroska_muxer/stream_kind.h"

#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "tests/support/media_types.h"

using namespace test_support;

namespace {

TEST(StreamKind, TheKindFollowsTheMajorType) {
    const auto kindOf = [](const GUID& major) {
        return StreamKindOf(MediaTypeValue(major, GUID_NULL, GUID_NULL).Get());
    };
    EXPECT_EQ(MuxStreamKind::Video, kindOf(MEDIATYPE_Video));
    EXPECT_EQ(MuxStreamKind::Audio, kindOf(MEDIATYPE_Audio));
    EXPECT_EQ(MuxStreamKind::Subtitle, kindOf(MEDIATYPE_Text));
    EXPECT_EQ(MuxStreamKind::Subtitle, kindOf(mediatype::kSubtitle));
    EXPECT_EQ(MuxStreamKind::Other, kindOf(MEDIATYPE_Stream));
    EXPECT_EQ(0, static_cast<int>(MuxStreamKind::Video));
    EXPECT_EQ(1, static_cast<int>(MuxStreamKind::Audio));
    EXPECT_EQ(2, static_cast<int>(MuxStreamKind::Subtitle));
    EXPECT_EQ(3, static_cast<int>(MuxStreamKind::Other));
}

} // namespace
