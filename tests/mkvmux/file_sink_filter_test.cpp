#include "mkvmux/file_sink_filter.h"

#include "mkvmux/graph_walk.h"
#include "tests/mkvmux/com_test.h"
#include "tests/mkvmux/temporary_file.h"
#include "tests/support/fake_graph.h"
#include "tests/support/fake_upstream_pin.h"

namespace mkvmux {
namespace {

using test_mkvmux::TemporaryFile;
using test_support::FakeGraph;
using test_support::FakeUpstreamPin;
using test_support::MediaTypeValue;

MediaTypeValue StreamType() {
    return MediaTypeValue(MEDIATYPE_Stream, GUID_NULL, GUID_NULL);
}

class FileSinkFilter : public test_mkvmux::ComTest {
  protected:
    FileSinkFilter() : m_file(L".mkv"), m_sink(CFileSinkFilter::Make()) {
        m_pin = FreePinOf(m_sink.Get(), PINDIR_INPUT);
    }
    void TearDown() override {
        if (m_sink) {
            m_sink->JoinFilterGraph(nullptr, nullptr);
        }
        m_pin.Reset();
        m_sink.Reset();
        ComTest::TearDown();
    }

    FakeGraph m_graph;
    TemporaryFile m_file;
    win::ComPtr<CFileSinkFilter> m_sink;
    win::ComPtr<IPin> m_pin;
};

TEST_F(FileSinkFilter, TakesByteStreamsAlone) {
    EXPECT_EQ(m_pin->QueryAccept(&StreamType().Get()), S_OK);
    for (const GUID& major : {MEDIATYPE_Video, MEDIATYPE_Audio, GUID_NULL}) {
        EXPECT_NE(m_pin->QueryAccept(&MediaTypeValue(major, GUID_NULL, GUID_NULL).Get()), S_OK);
    }
    FakeUpstreamPin upstream(StreamType());
    EXPECT_EQ(upstream.ConnectTo(m_pin.Get()), S_OK);
}

TEST_F(FileSinkFilter, IsAFileWriterThatCanBeNamed) {
    const win::ComPtr<IFileSinkFilter> file = m_sink.Query<IFileSinkFilter>(IID_IFileSinkFilter);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->SetFileName(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(file->GetCurFile(nullptr, nullptr), E_POINTER);
    ASSERT_EQ(file->SetFileName(m_file.Path().c_str(), nullptr), S_OK);
    LPOLESTR name = nullptr;
    AM_MEDIA_TYPE type{};
    type.majortype = MEDIATYPE_Video;
    ASSERT_EQ(file->GetCurFile(&name, &type), S_OK);
    EXPECT_EQ(name, m_file.Path());
    EXPECT_EQ(type.majortype, GUID_NULL);
    CoTaskMemFree(name);
}

TEST_F(FileSinkFilter, ItsPinOffersTheFileAsAStream) {
    ASSERT_EQ(m_sink->CreateFileOnDisk(m_file.Path(), false), S_OK);
    win::ComPtr<IStream> stream = m_pin.Query<IStream>(IID_IStream);
    ASSERT_TRUE(stream);
    EXPECT_EQ(stream->Write("matroska", 8, nullptr), S_OK);
    // One object, two interfaces.
    EXPECT_EQ(stream.Query<IUnknown>(IID_IUnknown).Get(), m_pin.Query<IUnknown>(IID_IUnknown).Get());
    EXPECT_EQ(stream.Query<IPin>(IID_IPin).Get(), m_pin.Get());
    EXPECT_TRUE(m_pin.Query<ISequentialStream>(IID_ISequentialStream));
    stream.Reset();
    m_pin.Reset();
    m_sink.Reset();
    EXPECT_EQ(m_file.Content(), "matroska");
}

TEST_F(FileSinkFilter, TheStreamKeepsTheFileOpenAndWritableAfterTheGraphIsGone) {
    ASSERT_EQ(m_sink->CreateFileOnDisk(m_file.Path(), false), S_OK);
    win::ComPtr<IStream> stream = m_pin.Query<IStream>(IID_IStream);
    m_pin.Reset();
    m_sink.Reset();
    EXPECT_EQ(stream->Write("late", 4, nullptr), S_OK);
    stream.Reset();
    EXPECT_EQ(m_file.Content(), "late");
}

TEST_F(FileSinkFilter, TheEndOfTheStreamCompletesARunningGraph) {
    m_sink->JoinFilterGraph(&m_graph, L"sink");
    FakeUpstreamPin upstream(StreamType());
    ASSERT_EQ(upstream.ConnectTo(m_pin.Get()), S_OK);
    ASSERT_EQ(m_sink->Pause(), S_OK);
    ASSERT_EQ(m_sink->Run(0), S_OK);
    EXPECT_EQ(m_graph.EventCount(EC_COMPLETE), 0);
    EXPECT_EQ(upstream.DeliverEndOfStream(), S_OK);
    ASSERT_EQ(m_graph.EventCount(EC_COMPLETE), 1);
    EXPECT_EQ(m_graph.Events().back().parameter1, S_OK);
    EXPECT_EQ(m_graph.Events().back().parameter2, reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(m_sink.Get())));
    m_sink->Stop();
}

TEST_F(FileSinkFilter, AnEndThatComesWhilePausedWaitsForRun) {
    m_sink->JoinFilterGraph(&m_graph, L"sink");
    FakeUpstreamPin upstream(StreamType());
    ASSERT_EQ(upstream.ConnectTo(m_pin.Get()), S_OK);
    ASSERT_EQ(m_sink->Pause(), S_OK);
    EXPECT_EQ(upstream.DeliverEndOfStream(), S_OK);
    EXPECT_EQ(m_graph.EventCount(EC_COMPLETE), 0);
    ASSERT_EQ(m_sink->Run(0), S_OK);
    EXPECT_EQ(m_graph.EventCount(EC_COMPLETE), 1);
    // A second run begins anew.
    m_sink->Stop();
    m_sink->Run(0);
    EXPECT_EQ(m_graph.EventCount(EC_COMPLETE), 1);
    m_sink->Stop();
}

TEST_F(FileSinkFilter, AFailedWriteAbortsTheGraphOnceAndReachesTheWriter) {
    m_sink->JoinFilterGraph(&m_graph, L"sink");
    const win::ComPtr<IStream> stream = m_pin.Query<IStream>(IID_IStream);
    // No file was created: the system refuses every write.
    const HRESULT refused = HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE);
    EXPECT_EQ(stream->Write("x", 1, nullptr), refused);
    EXPECT_EQ(stream->Write("x", 1, nullptr), refused);
    ASSERT_EQ(m_graph.EventCount(EC_ERRORABORT), 1);
    EXPECT_EQ(static_cast<HRESULT>(m_graph.Events().front().parameter1), refused);
    EXPECT_EQ(m_sink->Stream().FirstFailure(), refused);
}

TEST_F(FileSinkFilter, RefusesSamples) {
    FakeUpstreamPin upstream(StreamType());
    ASSERT_EQ(upstream.ConnectTo(m_pin.Get()), S_OK);
    m_sink->Pause();
    EXPECT_EQ(upstream.Deliver({1, 2, 3}, 0, 1), E_UNEXPECTED);
    m_sink->Stop();
}

TEST_F(FileSinkFilter, CallsItselfARenderer) {
    const auto flags = m_sink.Query<IAMFilterMiscFlags>(IID_IAMFilterMiscFlags);
    ASSERT_TRUE(flags);
    EXPECT_EQ(flags->GetMiscFlags(), static_cast<ULONG>(AM_FILTER_MISC_FLAGS_IS_RENDERER));
}

} // namespace
} // namespace mkvmux
