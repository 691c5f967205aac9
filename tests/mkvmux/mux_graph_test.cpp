#include "mkvmux/mux_graph.h"

#include <gmock/gmock.h>

#include "mkvmux/failure.h"
#include "mkvmux/muxer_settings.h"
#include "mkvmux/text.h"
#include "tests/mkvmux/com_test.h"
#include "tests/mkvmux/stub_muxer.h"
#include "tests/mkvmux/temporary_file.h"
#include "tests/support/fake_upstream_pin.h"
#include "tests/support/media_types.h"

namespace mkvmux {
namespace {

using namespace test_support;
using test_mkvmux::MakeStubMuxer;
using test_mkvmux::TemporaryFile;
using testing::HasSubstr;

class MuxGraphTest : public test_mkvmux::ComTest {};

template <typename Call>
std::string FailureOf(Call call) {
    try {
        call();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return {};
}

TEST_F(MuxGraphTest, ConnectsTheStreamsOfAFile) {
    const TemporaryFile input(L".wav");
    input.SetContent(test_mkvmux::PcmWaveFile(1));
    MuxGraph graph(MakeStubMuxer({MEDIATYPE_Audio}));
    graph.AddInput(input.Path());
    ASSERT_EQ(graph.Streams().size(), 1u);
    EXPECT_EQ(graph.Streams()[0].type.majortype, MEDIATYPE_Audio);
}

TEST_F(MuxGraphTest, AStreamThatTheMuxerRefusesIsNamedWithItsType) {
    const TemporaryFile input(L".wav");
    input.SetContent(test_mkvmux::PcmWaveFile(1));
    MuxGraph graph(MakeStubMuxer({MEDIATYPE_Video}));
    const std::string failure = FailureOf([&] { graph.AddInput(input.Path()); });
    EXPECT_THAT(failure, HasSubstr(Utf8FromWide(input.Path()) + ": stream '"));
    EXPECT_THAT(failure, HasSubstr("(audio wave tag 0x0001, 8000 Hz, 1 channel, 16 bits)"));
    EXPECT_THAT(failure, HasSubstr("the muxer does not take this type"));
}

TEST_F(MuxGraphTest, AStreamWithoutAMediaTypeIsNamed) {
    MuxGraph graph(MakeStubMuxer({MEDIATYPE_Video}));
    SourceStream stream;
    stream.input = L"a.avi";
    stream.pinName = L"Stream 01";
    EXPECT_THAT(FailureOf([&] { graph.AddStream(stream); }), HasSubstr("a.avi: stream 'Stream 01': the splitter"));
}

TEST_F(MuxGraphTest, AStreamWithoutACodecIdentifierIsNamed) {
    // The muxer takes the type, and no codec identifier exists for it.
    const MediaTypeValue type = Mpeg2VideoType(SubtypeFromFourCC('X', 'Y', 'Z', 'W'), {}, {});
    FakeUpstreamPin upstream(type);
    std::string failure;
    {
        MuxGraph graph(MakeStubMuxer({MEDIATYPE_Video}));
        ASSERT_EQ(graph.Graph()->AddFilter(&upstream.Filter(), L"source"), S_OK);
        SourceStream stream{L"a.avi", L"Stream 00", win::ComPtr<IPin>(&upstream), CMediaType(type.Get()), false};
        failure = FailureOf([&] { graph.AddStream(std::move(stream)); });
        graph.Graph()->RemoveFilter(&upstream.Filter());
    }
    EXPECT_THAT(failure, HasSubstr("a.avi: stream 'Stream 00' ("));
    EXPECT_THAT(failure, HasSubstr("Matroska has no codec identifier for this type"));
}

TEST_F(MuxGraphTest, MoreStreamsThanInputsAreAnError) {
    const TemporaryFile input(L".wav");
    input.SetContent(test_mkvmux::PcmWaveFile(1));
    MuxGraph graph(MakeStubMuxer({MEDIATYPE_Audio}));
    graph.AddInput(input.Path());
    EXPECT_THAT(FailureOf([&] { graph.AddInput(input.Path()); }), HasSubstr("the muxer has no free input"));
}

TEST_F(MuxGraphTest, ADisabledStreamThatTheMuxerRefusesIsSkipped) {
    const TemporaryFile input(L".wav");
    input.SetContent(test_mkvmux::PcmWaveFile(1));
    MuxGraph graph(MakeStubMuxer({MEDIATYPE_Video}));
    graph.AddInput(input.Path(), {0});
    EXPECT_TRUE(graph.Streams().empty());
    ASSERT_EQ(graph.SkippedStreams().size(), 1u);
    EXPECT_EQ(graph.SkippedStreams()[0].number, 0u);
    // The next stream has the next number, which is not disabled.
    EXPECT_THAT(FailureOf([&] { graph.AddInput(input.Path(), {0}); }), HasSubstr("does not take this type"));
}

TEST_F(MuxGraphTest, AMuxerThatTakesNoSettingsIsToldSo) {
    MuxGraph graph(MakeStubMuxer({MEDIATYPE_Audio}));
    EXPECT_EQ(FailureOf([&] { const MuxerSettings settings(graph.Muxer()); }),
              "the installed version of the muxer takes no settings");
}

TEST_F(MuxGraphTest, AnOutputThatCannotBeCreatedIsNamedWithItsCause) {
    MuxGraph graph(MakeStubMuxer({MEDIATYPE_Audio}));
    const std::string failure = FailureOf([&] { graph.OpenOutput(L"no\\such\\folder\\out.mkv", false); });
    EXPECT_THAT(failure, HasSubstr("no\\such\\folder\\out.mkv: cannot be created: "));
    EXPECT_THAT(failure, HasSubstr("0x80070003"));
}

TEST_F(MuxGraphTest, TheOutputIsCreatedBehindTheMuxer) {
    const TemporaryFile output(L".mkv");
    {
        MuxGraph graph(MakeStubMuxer({MEDIATYPE_Audio}));
        EXPECT_FALSE(output.Exists());
        graph.OpenOutput(output.Path(), false);
        EXPECT_TRUE(output.Exists());
    }
    MuxGraph another(MakeStubMuxer({MEDIATYPE_Audio}));
    EXPECT_THAT(FailureOf([&] { another.OpenOutput(output.Path(), false); }), HasSubstr("cannot be created"));
}

} // namespace
} // namespace mkvmux
