// A schedule: up to four inputs with a thread each, an application and a second thread of it, which connect,
// disconnect, pause, run, stop, flush, end, and set and get parameters as the input chooses, on a stream that fails as
// the input chooses. Every run's file is read. The threads interleave as they like: what is checked holds however they
// do. A deadlock is libFuzzer's timeout.
//
// The input is a row of rounds, each from Pause to Stop: who is connected, which calls of the stream fail, how the
// round ends, the steps of the application, of its second thread, and of each feeder.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "dshow/base_object.h"
#include "fuzz/require.h"
#include "fuzz/schedule_check.h"
#include "matroska_muxer/matroska_muxer.h"
#include "tests/support/fake_graph.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/pin_lookup.h"
#include "tests/support/watchdog.h"
#include "win/bstr.h"
#include "win/wide_string.h"

namespace {

using namespace test_support;
using fuzz::ByteScript;
using fuzz::Feeder;
using fuzz::FeederKind;
using fuzz::Require;

constexpr size_t kFeeders = 4;
constexpr int kMaxRounds = 4;
constexpr INT32 kRowsTouched = 5;
constexpr size_t kMaxAttachments = 3; // they stay for all files to come

struct Step {
    size_t what = 0;
    std::uint8_t how = 0;
};

std::vector<Step> ReadSteps(ByteScript& script, size_t most) {
    std::vector<Step> steps;
    for (size_t count = script.Below(most); count > 0; --count) {
        const std::uint8_t what = script.Byte();
        steps.push_back({what, script.Byte()});
    }
    return steps;
}

std::vector<fuzz::PlannedFault> ReadFaults(ByteScript& script) {
    using Kind = fuzz::PlannedFault::Kind;
    constexpr StreamOperation kOperations[] = {StreamOperation::Write, StreamOperation::Write,
                                               StreamOperation::Write, StreamOperation::Seek,
                                               StreamOperation::Stat,  StreamOperation::SetSize};
    constexpr Kind kKinds[] = {Kind::Error, Kind::Full, Kind::Short, Kind::ShortError};
    std::vector<fuzz::PlannedFault> faults;
    const size_t count = script.Below(8); // none, most of the time
    for (size_t i = 4; i < count; ++i) {
        fuzz::PlannedFault fault;
        fault.operation = kOperations[script.Below(std::size(kOperations))];
        fault.first = script.Byte();
        const std::uint8_t how = script.Byte();
        fault.kind = kKinds[how & 3];
        fault.count = how >> 6 == 3 ? 1000 : how >> 6;
        fault.keptBytes = script.Byte();
        faults.push_back(fault);
    }
    return faults;
}

// ---- Parameters --------------------------------------------------------------------------------------------------

// As an application sets and gets them, on any thread at any time.
class Parameters {
  public:
    explicit Parameters(IBaseFilter* filter) : m_filter(filter) {
        Require(SUCCEEDED(filter->QueryInterface(IID_IModuleConfig, m_config.PutVoid())));
    }

    void Take(const Step& step) {
        switch (step.what % 8) {
        case 0:
            SetRow(step.how);
            break;
        case 1:
            (void)IsEnabled(step.how % kRowsTouched);
            break;
        case 2:
            SetDocType(step.how);
            break;
        case 3:
            AddAttachment(step.how);
            break;
        case 4:
            AskValues();
            break;
        case 5:
            SaveAndLoad();
            break;
        case 6:
            AskPins();
            break;
        default:
            std::this_thread::yield();
            break;
        }
    }

  private:
    void SetRow(std::uint8_t how) {
        const win::Bstr name(WideString(how & 7, static_cast<WCHAR>('a' + how % 26)));
        const win::Bstr language{WideStringView(how % 2 == 0 ? OLESTR("English") : OLESTR("Spanish"))};
        TrackSettings row{how % kRowsTouched,
                          static_cast<BYTE>(how < 224),
                          static_cast<BYTE>(how & 1),
                          0,
                          language.Get(),
                          name.Get(),
                          -1};
        VARIANT value{};
        V_BYREF(&value) = &row;
        Require(m_config->SetValue(&MKVMUX_TrackInfo, &value) == S_OK);
    }
    bool IsEnabled(INT32 index) {
        TrackSettings row{};
        row.index = index;
        VARIANT value{};
        V_BYREF(&value) = &row;
        Require(m_config->GetValue(&MKVMUX_TrackInfo, &value) == S_OK);
        SysFreeString(row.language);
        SysFreeString(row.name);
        return row.bEnabled != 0;
    }
    void SetDocType(std::uint8_t how) {
        VARIANT value{};
        V_UI4(&value) = how % 3;
        Require(m_config->SetValue(&MKVMUX_DocType, &value) == S_OK);
    }
    void AddAttachment(std::uint8_t how) {
        const size_t number = ++m_attachments;
        if (number > kMaxAttachments) {
            return;
        }
        std::vector<BYTE> data(how);
        MuxAttachment attachment{};
        attachment.data = data.data();
        attachment.dataSize = how;
        attachment.uid = number;
        VARIANT value{};
        V_BYREF(&value) = &attachment;
        Require(m_config->SetValue(&MKVMUX_Attachment, &value) == S_OK);
    }
    void AskValues() {
        VARIANT value{};
        for (const GUID* key : {&MKVMUX_InputCount, &MKVMUX_DocType, &MKVMUX_Position}) {
            Require(m_config->GetValue(key, &value) == S_OK);
        }
        Require(FAILED(m_config->SetValue(&MKVMUX_Position, &value)));
    }
    // Into a filter of its own: each load would double the attachments.
    void SaveAndLoad() {
        MemoryStream saved;
        saved.SetRecording(false);
        Require(m_config->Save(&saved, TRUE) == S_OK);
        saved.SetBytes(saved.Bytes());
        HRESULT hr = S_OK;
        CUnknown* const other = CMatroskaMuxer::CreateInstance(nullptr, &hr);
        other->NonDelegatingAddRef();
        Require(static_cast<CMatroskaMuxer*>(other)->Load(&saved) == S_OK);
        other->NonDelegatingRelease();
    }
    void AskPins() {
        for (const auto& pin : PinsOf(m_filter)) {
            win::ComPtr<IPin> peer;
            (void)pin->ConnectedTo(peer.Put());
        }
    }

    IBaseFilter* const m_filter;
    win::ComPtr<IModuleConfig> m_config;
    std::atomic<size_t> m_attachments{0};
};

// ---- The application ---------------------------------------------------------------------------------------------

class Schedule {
  public:
    explicit Schedule(ByteScript script);
    ~Schedule();
    Schedule(const Schedule&) = delete;
    Schedule& operator=(const Schedule&) = delete;

    void Play() {
        for (int round = 0; round < kMaxRounds && !m_script.IsAtEnd(); ++round) {
            PlayRound();
        }
    }

  private:
    void PlayRound();
    void ChangeConnections();
    void Start(bool byRun);
    void TakeStep(const Step& step);
    void TryToChangeWhileStreaming(Feeder& feeder);
    void Restart(Feeder* reconnected);
    void WaitForEnd(int endsBefore);
    void CheckFile(bool endsByItself);
    [[nodiscard]] win::ComPtr<IPin> FreePin();
    [[nodiscard]] bool HasInput() const;
    [[nodiscard]] bool HasRefusedInput() const;

    ByteScript m_script;
    const LONG m_objectsBefore;
    fuzz::PlannedStream m_stream;
    FakeSinkPin m_sink;
    FakeGraph m_graph;
    win::ComPtr<IBaseFilter> m_filter;
    std::unique_ptr<Parameters> m_parameters;
    fuzz::Feeders m_feeders;
    bool m_isStreaming = false;
    bool m_isDisturbed = false; // samples may be lost in this round
};

Schedule::Schedule(ByteScript script)
    : m_script(script), m_objectsBefore(CBaseObject::ObjectsActive()), m_sink(m_stream) {
    HRESULT hr = S_OK;
    CUnknown* const object = CMatroskaMuxer::CreateInstance(nullptr, &hr);
    object->NonDelegatingAddRef();
    Require(hr == S_OK && SUCCEEDED(object->NonDelegatingQueryInterface(IID_IBaseFilter, m_filter.PutVoid())));
    object->NonDelegatingRelease();
    Require(SUCCEEDED(m_filter->JoinFilterGraph(&m_graph, nullptr)));
    m_parameters = std::make_unique<Parameters>(m_filter.Get());
    for (size_t i = 0; i < kFeeders; ++i) {
        m_feeders.emplace_back(static_cast<std::uint8_t>(i));
    }
}

Schedule::~Schedule() {
    for (Feeder& feeder : m_feeders) {
        feeder.Disconnect();
    }
    m_sink.Unplug();
    m_parameters.reset();
    Require(SUCCEEDED(m_filter->JoinFilterGraph(nullptr, nullptr)));
    Require(m_filter.Detach()->Release() == 0);
    Require(CBaseObject::ObjectsActive() == m_objectsBefore);
}

bool Schedule::HasInput() const {
    return std::ranges::any_of(m_feeders, &Feeder::IsConnected);
}

bool Schedule::HasRefusedInput() const {
    return std::ranges::any_of(
        m_feeders, [](const Feeder& feeder) { return feeder.IsConnected() && feeder.Kind() == FeederKind::Refused; });
}

win::ComPtr<IPin> Schedule::FreePin() {
    for (const auto& pin : PinsOf(m_filter.Get())) {
        win::ComPtr<IPin> peer;
        PIN_DIRECTION direction{};
        (void)pin->QueryDirection(&direction);
        if (direction == PINDIR_INPUT && FAILED(pin->ConnectedTo(peer.Put()))) {
            return pin;
        }
    }
    return {};
}

// Two bits a feeder: stay, be connected anew, go.
void Schedule::ChangeConnections() {
    const bool hasOutput = m_script.Below(8) != 7;
    if (hasOutput && m_sink.Peer() == nullptr) {
        Require(SUCCEEDED(PinNamed(m_filter.Get(), OLESTR("Out"))->Connect(&m_sink, nullptr)));
    } else if (!hasOutput) {
        m_sink.Unplug();
    }
    const std::uint8_t changes = m_script.Byte();
    for (size_t i = 0; i < kFeeders; ++i) {
        const unsigned change = changes >> (2 * i) & 3;
        if (change != 0) {
            m_feeders[i].Disconnect();
        }
        if (change == 1 || change == 2) {
            const auto kind = static_cast<FeederKind>(m_script.Below(fuzz::kFeederKinds));
            const auto pin = FreePin(); // there always is one
            Require(pin && SUCCEEDED(m_feeders[i].ConnectTo(pin.Get(), kind)));
        }
    }
}

void Schedule::Start(bool byRun) {
    const HRESULT hr = byRun ? m_filter->Run(0) : m_filter->Pause();
    m_isStreaming = SUCCEEDED(hr);
    Require(m_isStreaming || m_stream.HasFailed() || HasRefusedInput());
    FILTER_STATE state{};
    (void)m_filter->GetState(0, &state);
    Require(m_isStreaming == (state != State_Stopped));
}

void Schedule::PlayRound() {
    ChangeConnections();
    m_stream.BeginRun(ReadFaults(m_script));
    const size_t how = m_script.Byte();
    const bool endsByItself = how % 4 != 3;
    const bool startsByRun = how / 4 % 4 == 3;
    const std::vector<Step> steps = ReadSteps(m_script, 6);
    const std::vector<Step> asks = ReadSteps(m_script, 6);
    for (Feeder& feeder : m_feeders) {
        feeder.Prepare(m_script, endsByItself);
    }
    m_isDisturbed = false;
    const int endsBefore = m_sink.Counts().endsOfStream;
    Start(startsByRun);
    std::vector<std::jthread> threads;
    for (Feeder& feeder : m_feeders) {
        threads.emplace_back([&feeder] { feeder.Play(); });
    }
    std::jthread asker([&] {
        for (const Step& ask : asks) {
            m_parameters->Take(ask);
        }
    });
    for (const Step& step : steps) {
        TakeStep(step);
    }
    if (endsByItself && !m_isDisturbed) {
        threads.clear();
        WaitForEnd(endsBefore);
    }
    Require(SUCCEEDED(m_filter->Stop()));
    threads.clear();
    asker.join();
    CheckFile(endsByItself);
    m_isStreaming = false;
}

void Schedule::TakeStep(const Step& step) {
    Feeder& feeder = m_feeders[step.how % kFeeders];
    switch (step.what % 8) {
    case 0:
        Require(!m_isStreaming || SUCCEEDED(m_filter->Run(step.how)));
        break;
    case 1:
        Require(!m_isStreaming || SUCCEEDED(m_filter->Pause()));
        break;
    case 2:
        std::this_thread::sleep_for(std::chrono::microseconds(step.how));
        break;
    case 3:
        m_isDisturbed = true;
        if (feeder.IsConnected()) {
            Require(SUCCEEDED(feeder.Pin()->BeginFlush()));
            std::this_thread::yield();
            Require(SUCCEEDED(feeder.Pin()->EndFlush()));
        }
        break;
    case 4:
        Restart(nullptr);
        break;
    case 5:
        Restart(&feeder);
        break;
    case 6:
        TryToChangeWhileStreaming(feeder);
        break;
    default:
        m_parameters->Take({step.how, step.how});
        break;
    }
}

// Its thread goes on delivering to the pin.
void Schedule::Restart(Feeder* reconnected) {
    m_isDisturbed = true;
    Require(SUCCEEDED(m_filter->Stop()));
    m_stream.ForgetWrites(); // the next file takes the place of this one
    if (reconnected != nullptr && reconnected->IsConnected()) {
        // The peers let go of each other and join again; the fake source knows nothing of it.
        const win::ComPtr<IPin> pin = reconnected->Pin();
        win::ComPtr<IPin> source;
        AM_MEDIA_TYPE type{};
        Require(SUCCEEDED(pin->ConnectedTo(source.Put())) && SUCCEEDED(pin->ConnectionMediaType(&type)));
        Require(SUCCEEDED(pin->Disconnect()));
        Require(SUCCEEDED(pin->ReceiveConnection(source.Get(), &type)));
        FreeTaskMemoryFormat(type);
    }
    Start(false);
}

void Schedule::TryToChangeWhileStreaming(Feeder& feeder) {
    if (!m_isStreaming) {
        return;
    }
    Feeder late(kFeeders);
    const auto pin = FreePin();
    Require(pin && FAILED(late.ConnectTo(pin.Get(), FeederKind::Pcm)));
    if (feeder.IsConnected()) {
        Require(FAILED(feeder.Pin()->Disconnect()));
    }
}

// A feeder whose stream there was has ended it; the others had none.
void Schedule::WaitForEnd(int endsBefore) {
    if (m_isStreaming && HasInput() && m_sink.Peer() != nullptr) {
        Require(m_sink.WaitForEndOfStream(kWatchdog, endsBefore + 1));
    }
}

void Schedule::CheckFile(bool endsByItself) {
    if (!m_isStreaming || !HasInput() || m_sink.Peer() == nullptr) {
        return;
    }
    if (m_stream.HasFailed()) {
        fuzz::CheckTakenClusters(m_stream);
        return;
    }
    const std::vector<BYTE> file = m_stream.Bytes();
    const MatroskaLayout layout = ReadLayout(file);
    fuzz::CheckLayoutOf(layout);
    fuzz::CheckOrder(layout, m_feeders);
    if (endsByItself && !m_isDisturbed) {
        fuzz::CheckAllThere(layout, m_feeders);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    GTEST_FLAG_SET(break_on_failure, true); // of the fakes, which count references
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    Schedule(ByteScript(data, size)).Play();
    return 0;
}
