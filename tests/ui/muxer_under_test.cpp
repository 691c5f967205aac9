#include "tests/ui/muxer_under_test.h"

#include "tests/support/pin_lookup.h"

using namespace test_support;

namespace ui_test {

MuxerUnderTest::MuxerUnderTest() {
    EXPECT_EQ(S_OK, m_module.RegisterServer());
    EXPECT_EQ(S_OK,
              m_module.Factory(CLSID_MatroskaMuxer)->CreateInstance(nullptr, IID_IBaseFilter, m_filter.PutVoid()));
    EXPECT_EQ(S_OK, m_config.Connect(m_filter.Get()));
}

MuxerUnderTest::~MuxerUnderTest() {
    m_filter->Stop();
    for (auto& source : m_sources) {
        source->Unplug();
    }
    m_sink.Unplug();
    m_config.Reset();
    EXPECT_EQ(0u, m_filter.Detach()->Release()) << "somebody still holds the filter";
    EXPECT_EQ(S_OK, m_module.UnregisterServer());
}

void MuxerUnderTest::ConnectVideo() {
    Connect(VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd')));
}

void MuxerUnderTest::ConnectAudio() {
    Connect(WaveType(mediasubtype::kPcm));
}

void MuxerUnderTest::ConnectSubtitles() {
    Connect(SubtitleType(mediasubtype::kUtf8));
}

void MuxerUnderTest::Connect(const MediaTypeValue& type) {
    auto source = std::make_unique<FakeUpstreamPin>(type);
    const std::wstring name = L"In " + std::to_wstring(m_sources.size());
    EXPECT_EQ(S_OK, source->ConnectTo(PinNamed(m_filter.Get(), name.c_str()).Get()));
    m_sources.push_back(std::move(source));
}

void MuxerUnderTest::Disconnect(size_t input) {
    m_sources.at(input)->Unplug();
}

client::TrackRow MuxerUnderTest::GetTrack(INT32 index) const {
    client::TrackRow row;
    EXPECT_EQ(S_OK, m_config.GetTrack(index, row));
    return row;
}

void MuxerUnderTest::SetTrack(const client::TrackRow& row) const {
    EXPECT_EQ(S_OK, m_config.SetTrack(row));
}

MuxDocType MuxerUnderTest::DocType() const {
    MuxDocType type{};
    EXPECT_EQ(S_OK, m_config.GetDocType(type));
    return type;
}

void MuxerUnderTest::SetDocType(MuxDocType type) const {
    EXPECT_EQ(S_OK, m_config.SetDocType(type));
}

std::vector<BYTE> MuxerUnderTest::WriteFile() {
    constexpr INT64 kSampleLength = 400000; // of 100 ns
    EXPECT_EQ(S_OK, PinNamed(m_filter.Get(), L"Out")->Connect(&m_sink, nullptr));
    EXPECT_EQ(S_OK, m_filter->Pause());
    for (INT64 sample = 0; sample < 3; ++sample) {
        for (auto& source : m_sources) {
            EXPECT_EQ(S_OK, source->Deliver({1, 2, 3, 4}, sample * kSampleLength, (sample + 1) * kSampleLength));
        }
    }
    for (auto& source : m_sources) {
        EXPECT_EQ(S_OK, source->DeliverEndOfStream());
    }
    EXPECT_TRUE(m_sink.WaitForEndOfStream(std::chrono::minutes(2)));
    EXPECT_EQ(S_OK, m_filter->Stop());
    return m_sink.Stream().Bytes();
}

} // namespace ui_test
