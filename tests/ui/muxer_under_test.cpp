#include "tests/ui/muxer_under_test.h"

#include "tests/support/pin_lookup.h"
#include "win/bstr.h"

using namespace test_support;

namespace ui_test {

namespace {

VARIANT ByReference(TrackSettings& row) {
    VARIANT value{};
    value.vt = VT_BYREF;
    value.byref = &row;
    return value;
}

} // namespace

MuxerUnderTest::MuxerUnderTest() {
    EXPECT_EQ(S_OK, m_module.RegisterServer());
    EXPECT_EQ(S_OK,
              m_module.Factory(CLSID_MatroskaMuxer)->CreateInstance(nullptr, IID_IBaseFilter, m_filter.PutVoid()));
    m_config = m_filter.Query<IModuleConfig>(IID_IModuleConfig);
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

MuxerUnderTest::Track MuxerUnderTest::GetTrack(INT32 index) const {
    TrackSettings row{};
    row.index = index;
    VARIANT value = ByReference(row);
    EXPECT_EQ(S_OK, m_config->GetValue(&MKVMUX_TrackInfo, &value));
    win::Bstr language;
    win::Bstr name;
    *language.Put() = row.language;
    *name.Put() = row.name;
    return {row.bEnabled, row.bDefault, row.bReserved, std::wstring(language.View()), std::wstring(name.View())};
}

void MuxerUnderTest::SetTrack(INT32 index, const Track& track) const {
    const win::Bstr language(track.language);
    const win::Bstr name(track.name);
    TrackSettings row{index,
                      static_cast<BYTE>(track.enabled),
                      static_cast<BYTE>(track.isDefault),
                      static_cast<BYTE>(track.reserved),
                      language.Get(),
                      name.Get(),
                      -1};
    const VARIANT value = ByReference(row);
    EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_TrackInfo, &value));
}

ULONG MuxerUnderTest::DocType() const {
    VARIANT value{};
    EXPECT_EQ(S_OK, m_config->GetValue(&MKVMUX_DocType, &value));
    return value.ulVal;
}

void MuxerUnderTest::SetDocType(ULONG type) const {
    VARIANT value{};
    value.ulVal = type;
    EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_DocType, &value));
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
