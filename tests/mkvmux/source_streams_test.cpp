#include "mkvmux/source_streams.h"

#include <gmock/gmock.h>

#include "dshow/media_subtypes.h"
#include "mkvmux/failure.h"
#include "mkvmux/filter_graph.h"
#include "mkvmux/text.h"
#include "tests/mkvmux/com_test.h"
#include "tests/mkvmux/temporary_file.h"

namespace mkvmux {
namespace {

using test_mkvmux::TemporaryFile;
using testing::HasSubstr;

class SourceStreamsTest : public test_mkvmux::ComTest {
  protected:
    static std::string FailureOf(const std::wstring& path) {
        const win::ComPtr<IGraphBuilder> graph = CreateFilterGraph();
        SourceStreams sources(graph.Get());
        try {
            (void)sources.Open(path);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return {};
    }
};

TEST_F(SourceStreamsTest, FindsThePcmStreamOfAWaveFile) {
    const TemporaryFile file(L".wav");
    file.SetContent(test_mkvmux::PcmWaveFile(1));
    const win::ComPtr<IGraphBuilder> graph = CreateFilterGraph();
    const std::vector<SourceStream> streams = SourceStreams(graph.Get()).Open(file.Path());
    ASSERT_EQ(streams.size(), 1u);
    EXPECT_EQ(streams[0].input, file.Path());
    EXPECT_EQ(streams[0].type.majortype, MEDIATYPE_Audio);
    EXPECT_EQ(streams[0].type.subtype, mediasubtype::kPcm);
    EXPECT_THAT(streams[0].Name(), HasSubstr(Utf8FromWide(file.Path())));
}

TEST_F(SourceStreamsTest, OpensAFileWhoseNameIsNotInTheCodePage) {
    const TemporaryFile file(L"_\u00e4\u20ac\u65e5\u672c.wav");
    file.SetContent(test_mkvmux::PcmWaveFile(1));
    EXPECT_EQ(FailureOf(file.Path()), "");
}

TEST_F(SourceStreamsTest, TextIsReadByTheOwnSourceWhateverItsName) {
    for (const wchar_t* const extension : {L".srt", L".dat", L".avi", L".wav"}) {
        const TemporaryFile file(extension);
        file.SetContent("1\n00:00:00,000 --> 00:00:01,000\nA\n");
        const win::ComPtr<IGraphBuilder> graph = CreateFilterGraph();
        const std::vector<SourceStream> streams = SourceStreams(graph.Get()).Open(file.Path());
        ASSERT_EQ(streams.size(), 1u);
        EXPECT_TRUE(streams[0].ownReader);
        EXPECT_EQ(streams[0].readerName, "SubRip");
    }
}

TEST_F(SourceStreamsTest, AMissingInputIsNamedWithItsCause) {
    const std::string failure = FailureOf(L"no_such_file.avi");
    EXPECT_THAT(failure, HasSubstr("no_such_file.avi: cannot be opened"));
    EXPECT_THAT(failure, HasSubstr("0x80070002"));
}

TEST_F(SourceStreamsTest, AnInputThatNoSplitterTakesIsNamed) {
    const TemporaryFile text(L".txt");
    text.SetContent("hello");
    EXPECT_THAT(FailureOf(text.Path()), HasSubstr(Utf8FromWide(text.Path()) + ": no splitter takes it"));
    const TemporaryFile damaged(L".avi");
    damaged.SetContent("RIFFxxxxAVI and nothing more");
    EXPECT_THAT(FailureOf(damaged.Path()), HasSubstr("no splitter takes it"));
}

TEST_F(SourceStreamsTest, AnEmptyInputIsNamedAsSuch) {
    for (const wchar_t* const extension : {L".avi", L".mkv", L".srt"}) {
        const TemporaryFile empty(extension);
        empty.SetContent("");
        EXPECT_EQ(FailureOf(empty.Path()), Utf8FromWide(empty.Path()) + ": is empty");
    }
}

TEST_F(SourceStreamsTest, ANameThatIsTooLongIsNamedAsSuch) {
    EXPECT_THAT(FailureOf(std::wstring(256, L'x') + L".avi"), HasSubstr("cannot be opened: the name is too long"));
    EXPECT_THAT(FailureOf(L"folder/" + std::wstring(256, L'x') + L"/a.avi"), HasSubstr("the name is too long"));
    EXPECT_THAT(FailureOf(std::wstring(250, L'x') + L".avi"), HasSubstr("0x80070002"));
}

} // namespace
} // namespace mkvmux
