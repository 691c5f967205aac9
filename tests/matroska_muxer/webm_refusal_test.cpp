// A start that the strict profile refuses, since WebM cannot hold what would be written.
#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "tests/matroska_muxer/muxer_rig.h"

namespace {

using test_support::VideoInfoType;
using test_support::WaveType;

void SetNumber(MuxerRig& rig, const GUID& key, ULONG number) {
    VARIANT value{};
    V_UI4(&value) = number;
    ASSERT_EQ(S_OK, rig.Config()->SetValue(&key, &value));
}

void AskForStrictWebm(MuxerRig& rig) {
    SetNumber(rig, MKVMUX_Profile, MuxProfile_Strict);
    SetNumber(rig, MKVMUX_DocType, MuxDocType_Webm);
}

void ConnectVp8AndAac(MuxerRig& rig) {
    ASSERT_EQ(S_OK, rig.ConnectInput(VideoInfoType(mediasubtype::kVp8)));
    ASSERT_EQ(S_OK, rig.ConnectInput(WaveType(mediasubtype::kRawAac, {}, {0x11, 0x90})));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
}

void ExpectStoppedWithoutAFile(MuxerRig& rig) {
    FILTER_STATE state = State_Running;
    EXPECT_EQ(S_OK, rig.Filter()->GetState(0, &state));
    EXPECT_EQ(State_Stopped, state);
    EXPECT_EQ(S_FALSE, rig.Deliver(0, 0, 40));
    EXPECT_TRUE(rig.File().empty());
}

TEST(WebmRefusal, PauseNamesTheInput) {
    MuxerRig rig;
    ConnectVp8AndAac(rig);
    AskForStrictWebm(rig);
    EXPECT_EQ(MuxNotWebmInput(1), rig.Pause());
    ExpectStoppedWithoutAFile(rig);
    EXPECT_EQ(MuxNotWebmInput(1), rig.Pause()) << "a second try answers the same";
    ExpectStoppedWithoutAFile(rig);
}

TEST(WebmRefusal, PauseNamesAnAttachment) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(VideoInfoType(mediasubtype::kVp8)));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    AskForStrictWebm(rig);
    BYTE data[] = {1};
    MuxAttachment attachment{nullptr, nullptr, nullptr, 1, data, 1};
    VARIANT value{};
    V_BYREF(&value) = &attachment;
    ASSERT_EQ(S_OK, rig.Config()->SetValue(&MKVMUX_Attachment, &value));
    EXPECT_EQ(MUX_E_NOT_WEBM_ATTACHMENT, rig.Pause());
    ExpectStoppedWithoutAFile(rig);
}

TEST(WebmRefusal, WithoutTheRefusedInputAFileIsWritten) {
    MuxerRig rig;
    ConnectVp8AndAac(rig);
    AskForStrictWebm(rig);
    EXPECT_EQ(MuxNotWebmInput(1), rig.Pause());
    rig.SetRow({1, 0, 0, 0, nullptr, nullptr, -1});
    ASSERT_EQ(S_OK, rig.Pause());
    EXPECT_EQ(S_OK, rig.Deliver(0, 0, 40));
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());
    const auto layout = rig.Layout();
    EXPECT_EQ("webm", layout.docType);
    ASSERT_EQ(1u, layout.tracks.size());
    EXPECT_EQ("V_VP8", layout.tracks[0].codecId);
    EXPECT_EQ(1u, layout.BlocksOf(1).size());
}

TEST(WebmRefusal, AnotherTypeOfFileOrTheOtherProfileTakesIt) {
    MuxerRig rig;
    ConnectVp8AndAac(rig);
    AskForStrictWebm(rig);
    EXPECT_EQ(MuxNotWebmInput(1), rig.Pause());
    SetNumber(rig, MKVMUX_DocType, MuxDocType_Matroska);
    EXPECT_EQ(S_OK, rig.Pause());
    EXPECT_EQ(S_OK, rig.Stop());
    SetNumber(rig, MKVMUX_DocType, MuxDocType_Webm);
    SetNumber(rig, MKVMUX_Profile, MuxProfile_Compatible);
    EXPECT_EQ(S_OK, rig.Pause());
    EXPECT_EQ(S_OK, rig.Stop());
}

TEST(WebmRefusal, TheResultsOfInputsAreToldApart) {
    EXPECT_EQ(MUX_E_NOT_WEBM, MuxNotWebmInput(0));
    EXPECT_EQ(MUX_E_NOT_WEBM + 253, MuxNotWebmInput(253));
    EXPECT_EQ(MUX_E_NOT_WEBM + 254, MuxNotWebmInput(254));
    EXPECT_EQ(MUX_E_NOT_WEBM + 254, MuxNotWebmInput(10000));
    EXPECT_EQ(MUX_E_NOT_WEBM + 254, MuxNotWebmInput(-1));
    EXPECT_TRUE(FAILED(MuxNotWebmInput(0)));
    for (const HRESULT hr : {MuxNotWebmInput(0), MuxNotWebmInput(10000), MUX_E_NOT_WEBM_ATTACHMENT}) {
        EXPECT_TRUE(MuxIsNotWebm(hr));
    }
    for (const HRESULT hr : {S_OK, E_FAIL, MUX_E_NOT_WEBM - 1, MUX_E_NOT_WEBM_ATTACHMENT + 1}) {
        EXPECT_FALSE(MuxIsNotWebm(hr));
    }
}

} // namespace
