#include "tests/faults/fault_rig.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "dshow/base_object.h"
#include "dshow/class_factory.h"
#include "matroska_muxer/matroska_muxer.h"
#include "records/track_colour.h"
#include "tests/support/watchdog.h"
#include "win/bstr.h"

using namespace test_support;

namespace faults {

namespace {

constexpr INT64 kTicksPerMs = 10000; // of 100 ns

const CFactoryTemplate kTemplate{OLESTR("muxer"), &CLSID_MatroskaMuxer, CMatroskaMuxer::CreateInstance, nullptr,
                                 nullptr};

// A call of the product.
template <typename Body>
auto Call(Body body) {
    const ProductCode product;
    return body();
}

std::array<MediaTypeValue, kInputs> Types() {
    return {VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd'), {}, {1, 2, 3}), WaveType(mediasubtype::kPcm),
            SubtitleType(mediasubtype::kUtf8)};
}

HRESULT SetByReference(IModuleConfig& config, const GUID& key, void* record) {
    VARIANT value{};
    V_BYREF(&value) = record;
    return Call([&] { return config.SetValue(&key, &value); });
}

HRESULT SetText(IModuleConfig& config, const GUID& key, WideStringView text) {
    const win::Bstr given(text);
    VARIANT value{};
    V_BSTR(&value) = given.Get();
    return Call([&] { return config.SetValue(&key, &value); });
}

HRESULT SetRowAndAttachment(IModuleConfig& config) {
    static char s_mimeType[] = "text/plain";
    static BYTE s_data[] = {'h', 'i'};
    const win::Bstr language{WideStringView(OLESTR("French"))};
    const win::Bstr name{WideStringView(OLESTR("a name"))};
    TrackSettings row{0, 1, 1, 0, language.Get(), name.Get(), -1};
    MuxAttachment attachment{name.Get(), nullptr, s_mimeType, sizeof(s_data), s_data, 5};
    const HRESULT hr = SetByReference(config, MKVMUX_TrackInfo, &row);
    return FAILED(hr) ? hr : SetByReference(config, MKVMUX_Attachment, &attachment);
}

// The statistics of the tracks are written unless they are switched off.
HRESULT AskForStrictFiles(IModuleConfig& config) {
    VARIANT profile{};
    V_UI4(&profile) = MuxProfile_Strict;
    MuxTrackFlags flags{kSubtitle, MuxFlag_On, MuxFlag_On, MuxFlag_Unset, MuxFlag_Off, MuxFlag_Unset};
    HRESULT hr = Call([&] { return config.SetValue(&MKVMUX_Profile, &profile); });
    hr = FAILED(hr) ? hr : SetText(config, MKVMUX_Title, OLESTR("A title that no short string holds"));
    return FAILED(hr) ? hr : SetByReference(config, MKVMUX_TrackFlags, &flags);
}

// The tag stands in front of the clusters, and once more behind them with the statistics.
HRESULT Annotate(IModuleConfig& config) {
    const win::Bstr text{WideStringView(OLESTR("A text that no short string holds"))};
    MuxChapter chapter{MuxListIndex_Add, MuxLevel_Top, 0, MuxChapterTime_None, 0, 0, 0, text.Get(), nullptr};
    MuxTag tag{MuxListIndex_Add, MuxTagTrack_All, MuxLevel_Top, 0, nullptr, text.Get(), text.Get(), nullptr};
    MuxTrackColour colour = records::UntoldColour(kVideo);
    colour.range = 1;
    colour.redX = 0.5;
    HRESULT hr = SetByReference(config, MKVMUX_Chapter, &chapter);
    hr = FAILED(hr) ? hr : SetByReference(config, MKVMUX_Tag, &tag);
    return FAILED(hr) ? hr : SetByReference(config, MKVMUX_TrackColour, &colour);
}

} // namespace

bool Outcome::IsTold() const {
    return !events.empty() || pause != S_OK || std::ranges::any_of(refusals, [](HRESULT hr) { return hr != S_OK; });
}

FaultRig::FaultRig(const Recording& recording) : m_recording(recording), m_objectsBefore(CBaseObject::ObjectsActive()) {
    const auto types = Types();
    for (size_t i = 0; i < kInputs; ++i) {
        m_sources[i] = std::make_unique<FakeUpstreamPin>(types[i]);
    }
}

FaultRig::~FaultRig() {
    if (m_filter) {
        EXPECT_EQ(S_OK, Call([&] { return m_filter->Stop(); }));
        for (auto& source : m_sources) {
            Call([&] { source->Unplug(); });
        }
        Call([&] { m_sink.Unplug(); });
        EXPECT_EQ(S_OK, Call([&] { return m_filter->JoinFilterGraph(nullptr, nullptr); }));
        EXPECT_EQ(0u, Call([&] { return m_filter.Detach()->Release(); })) << "somebody still holds the filter";
    }
    EXPECT_EQ(m_objectsBefore, CBaseObject::ObjectsActive());
    EXPECT_EQ(0, m_sink.References());
    EXPECT_EQ(0, m_sink.Stream().References());
    EXPECT_EQ(0, m_graph.References());
}

HRESULT FaultRig::Build() {
    HRESULT hr = Create();
    hr = FAILED(hr) ? hr : Connect();
    return FAILED(hr) ? hr : Configure();
}

HRESULT FaultRig::Create() {
    const win::ComPtr<IClassFactory> factory(new CClassFactory(&kTemplate));
    const HRESULT hr = Call([&] { return factory->CreateInstance(nullptr, IID_IBaseFilter, m_filter.PutVoid()); });
    return FAILED(hr) ? hr : Call([&] { return m_filter->JoinFilterGraph(&m_graph, OLESTR("muxer")); });
}

HRESULT FaultRig::PinAt(ULONG index, IPin** pin) {
    win::ComPtr<IEnumPins> pins;
    if (const HRESULT hr = Call([&] { return m_filter->EnumPins(pins.Put()); }); FAILED(hr)) {
        return hr;
    }
    return Call([&] { return pins->Skip(index) == S_OK && pins->Next(1, pin, nullptr) == S_OK ? S_OK : E_FAIL; });
}

// The output is pin 0.
HRESULT FaultRig::Connect() {
    for (ULONG i = 0; i < kInputs; ++i) {
        win::ComPtr<IPin> pin;
        HRESULT hr = PinAt(i + 1, pin.Put());
        hr = FAILED(hr) ? hr : Call([&] { return m_sources[i]->ConnectTo(pin.Get()); });
        if (FAILED(hr)) {
            return hr;
        }
    }
    win::ComPtr<IPin> output;
    const HRESULT hr = PinAt(0, output.Put());
    return FAILED(hr) ? hr : Call([&] { return output->Connect(&m_sink, nullptr); });
}

HRESULT FaultRig::Configure() {
    const auto config = Call([&] { return m_filter.Query<IModuleConfig>(IID_IModuleConfig); });
    HRESULT hr = SetRowAndAttachment(*config.Get());
    if (SUCCEEDED(hr) && m_recording.IsStrict()) {
        hr = AskForStrictFiles(*config.Get());
    }
    if (SUCCEEDED(hr) && m_recording.isAnnotated) {
        hr = Annotate(*config.Get());
    }
    if (SUCCEEDED(hr) && !m_recording.logDirectory.empty()) {
        hr = SetText(*config.Get(), MKVMUX_LogDirectory, m_recording.logDirectory);
    }
    return hr;
}

Bytes FaultRig::PayloadOf(Input input, size_t frame) const {
    Bytes payload(input == kVideo ? m_recording.videoBytes : 20, static_cast<BYTE>(frame));
    payload[0] = static_cast<BYTE>('A' + input);
    return payload;
}

HRESULT FaultRig::Deliver(Input input, size_t frame) {
    const INT64 start = static_cast<INT64>(frame) * kFrameMs * kTicksPerMs;
    FakeMediaSample sample(PayloadOf(input, frame));
    sample.WithTimes(start, start + kFrameMs * kTicksPerMs)
        .WithSyncPoint(input != kVideo || frame % kFramesPerCluster == 0);
    return Call([&] { return m_sources[input]->Deliver(sample); });
}

HRESULT FaultRig::End(Input input) {
    return Call([&] { return m_sources[input]->DeliverEndOfStream(); });
}

// A source whose sample is refused ends its stream, as sources do.
void FaultRig::Feed(Outcome& outcome) {
    std::array<bool, kInputs> ended{};
    bool allEnded = true;
    const auto hear = [&](Input input, HRESULT hr) {
        outcome.refusals[input] = outcome.refusals[input] == S_OK ? hr : outcome.refusals[input];
    };
    const auto end = [&](Input input) {
        const HRESULT hr = ended[input] ? S_OK : End(input);
        ended[input] = true;
        allEnded = allEnded && hr == S_OK;
        hear(input, hr);
    };
    for (size_t frame = 0; frame < kFrames; ++frame) {
        for (const Input input : {kVideo, kAudio, kSubtitle}) {
            if (ended[input]) {
                continue;
            }
            if (const HRESULT hr = Deliver(input, frame); hr == S_OK) {
                outcome.taken[input].push_back(frame);
            } else {
                hear(input, hr);
                end(input);
            }
        }
    }
    std::ranges::for_each(std::array{kVideo, kAudio, kSubtitle}, end);
    if (allEnded) {
        ++m_endsOfStream;
        EXPECT_TRUE(m_sink.WaitForEndOfStream(kWatchdog, m_endsOfStream));
        // All has been written by now; these come too late for the file, but not for an answer.
        for (const Input input : {kVideo, kAudio, kSubtitle}) {
            hear(input, Deliver(input, kFrames));
        }
    }
}

Outcome FaultRig::Run() {
    const size_t eventsBefore = m_graph.Events().size();
    Outcome outcome;
    outcome.pause = Call([&] { return m_filter->Pause(); });
    if (SUCCEEDED(outcome.pause)) {
        Feed(outcome);
    }
    outcome.writesBeforeStop = Stream().Writes().size();
    outcome.stop = Call([&] { return m_filter->Stop(); });
    const auto events = m_graph.Events();
    for (size_t i = eventsBefore; i < events.size(); ++i) {
        if (events[i].code == MuxEvent_OutputFailed) {
            outcome.events.push_back(static_cast<HRESULT>(events[i].parameter1));
        }
    }
    outcome.file = Stream().Bytes();
    outcome.writes = Stream().Writes();
    return outcome;
}

} // namespace faults
