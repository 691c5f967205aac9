#include "mkvmux/mux_run.h"

#include <algorithm>
#include <array>

#include "client/module_config.h"
#include "mkvmux/exit_status.h"
#include "mkvmux/failure.h"
#include "mkvmux/graph_stopper.h"
#include "mkvmux/run_figures.h"
#include "mkvmux/text.h"
#include <qrx_mkvmuxer.h>

namespace mkvmux {

namespace {

constexpr DWORD kProgressIntervalMs = 200;
constexpr size_t kMaxStatusChars = 400;

} // namespace

MuxRun::MuxRun(const MuxGraph& graph, const Interruption& interruption, Console& console, ProgressDisplay& display,
               StatusDisplay& status)
    : m_graph(graph), m_interruption(interruption), m_console(console), m_display(display), m_status(status),
      m_meter(graph), m_control(graph.Graph().Query<IMediaControl>(IID_IMediaControl)),
      m_events(graph.Graph().Query<IMediaEvent>(IID_IMediaEvent)) {
    if (!m_control || !m_events) {
        throw Failure("the filter graph cannot be controlled");
    }
}

// Reached with a running graph only when something unforeseen is thrown.
MuxRun::~MuxRun() {
    if (!Stop()) {
        Console::Fail("out of memory or another unforeseen failure, and an input's filter does not stop");
        LeaveAtOnce(kExitFailed);
    }
}

void MuxRun::Start() {
    m_started = true;
    if (const HRESULT hr = m_control->Run(); FAILED(hr)) {
        // Those of a loaded configuration; what is known of before is told before.
        const std::string reason =
            hr == MUX_E_NOT_WEBM_ATTACHMENT ? "attachments cannot go into a WebM file" : DescribeResult(hr);
        throw Failure("the streams cannot start: " + reason);
    }
}

void MuxRun::Wait() {
    OAEVENT graphEvent = 0;
    if (const HRESULT hr = m_events->GetEventHandle(&graphEvent); FAILED(hr)) {
        throw Failure("the filter graph's events cannot be had: " + DescribeResult(hr));
    }
    // NOLINTNEXTLINE(performance-no-int-to-ptr): that is how the interface hands out its event
    const std::array<HANDLE, 2> events{m_interruption.Event(), reinterpret_cast<HANDLE>(graphEvent)};
    while (true) {
        ShowProgress();
        const DWORD reason =
            WaitForMultipleObjects(static_cast<DWORD>(events.size()), events.data(), FALSE, kProgressIntervalMs);
        if (reason == WAIT_OBJECT_0) {
            FinishDisplays();
            m_console.Warn("interrupted; the file ends here");
            return;
        }
        if (reason == WAIT_OBJECT_0 + 1 && HandleEvents()) {
            return;
        }
        if (reason == WAIT_FAILED) {
            throw Failure("the run cannot be waited for: " + DescribeResult(HRESULT_FROM_WIN32(GetLastError())));
        }
    }
}

void MuxRun::ShowProgress() {
    const int percent = m_meter.Percent();
    m_display.Show(percent);
    if (!m_status.IsOn()) {
        return;
    }
    // The muxer's clock, so that what is due is so by the time that is shown.
    const client::ModuleConfig config(m_graph.Muxer().Get());
    MuxStatistics file{};
    (void)config.GetStatistics(file);
    if (m_status.IsDue(file.elapsed)) {
        const std::string share = std::to_string(percent) + "%, ";
        const size_t columns = static_cast<size_t>(std::max(Console::TerminalColumns() - 1, 0));
        m_status.Show(file.elapsed, (share + StatusLine(ReadFigures(m_graph), kMaxStatusChars))
                                        .substr(0, Console::IsTerminal() ? columns : kMaxStatusChars));
    }
}

void MuxRun::FinishDisplays() {
    m_display.Finish();
    m_status.Finish();
}

bool MuxRun::HandleEvents() {
    LONG code = 0;
    LONG_PTR first = 0;
    LONG_PTR second = 0;
    while (m_events->GetEvent(&code, &first, &second, 0) == S_OK) {
        const LONG_PTR value = first;
        const LONG_PTR further = second;
        m_events->FreeEventParams(code, first, second);
        if (HandleEvent(code, value, further)) {
            return true;
        }
    }
    return false;
}

bool MuxRun::HandleEvent(LONG code, LONG_PTR first, LONG_PTR second) {
    const HRESULT hr = static_cast<HRESULT>(first);
    switch (code) {
    case EC_COMPLETE:
        return true;
    case EC_ERRORABORT:
        ThrowIfOutputFailed();
        throw Failure("a filter gave up: " + DescribeResult(hr));
    case MuxEvent_OutputFailed:
        ThrowIfOutputFailed();
        throw Failure("cannot be written: " + DescribeResult(hr));
    case MuxEvent_NextOutputFailed:
        if (hr != E_ABORT) { // nothing was left for a further part
            throw Failure("cannot be written: " + DescribeResult(hr));
        }
        return false;
    case MuxEvent_IndexAtEnd:
        WarnOfIndex(first, second);
        return false;
    case EC_STREAM_ERROR_STOPPED:
        m_console.Warn("a stream ended early: " + DescribeResult(hr));
        return false;
    case EC_STREAM_ERROR_STILLPLAYING:
        WarnOfDamage(hr);
        return false;
    default:
        return false;
    }
}

// The event does not say whose it is. Sources of our own tell their damage beside it, a system's splitter does not.
void MuxRun::WarnOfDamage(HRESULT damage) {
    for (const std::string& line : m_graph.Damages()) {
        if (m_toldDamages.insert(line).second) {
            m_console.Warn(line);
        }
    }
    if (m_toldDamages.empty()) {
        m_console.Warn("a stream is damaged: " + DescribeResult(damage));
    }
}

void MuxRun::Finish() {
    (void)Stop(); // the caller asks again
    ThrowIfOutputFailed();
    if (!m_interruption.IsRequested()) {
        m_display.Show(kWholePercent);
    }
    FinishDisplays();
    HandleLeftEvents();
}

// What the muxer said behind the end of the streams and in Stop. What sources say then is of no use to anybody.
void MuxRun::HandleLeftEvents() {
    LONG code = 0;
    LONG_PTR first = 0;
    LONG_PTR second = 0;
    while (m_events->GetEvent(&code, &first, &second, 0) == S_OK) {
        if (code == MuxEvent_OutputFailed || code == MuxEvent_NextOutputFailed || code == MuxEvent_IndexAtEnd) {
            (void)HandleEvent(code, first, second); // ours have nothing to be freed
        } else {
            m_events->FreeEventParams(code, first, second);
        }
    }
}

void MuxRun::WarnOfIndex(LONG_PTR bytes, LONG_PTR placeBytes) {
    m_console.Warn("the index is at the end of the file: it takes " + std::to_string(bytes) +
                   " bytes, and room was kept for " + std::to_string(placeBytes) + " (--reserve-index-space)");
}

bool MuxRun::Stop() {
    if (m_started) {
        m_started = false;
        m_isStuck = !GraphStopper().Stop(m_control, m_graph.Muxer());
    }
    return !m_isStuck;
}

void MuxRun::ThrowIfOutputFailed() const {
    if (const HRESULT hr = m_graph.Output().FirstFailure(); FAILED(hr)) {
        throw Failure("cannot be written: " + DescribeResult(hr));
    }
}

} // namespace mkvmux
