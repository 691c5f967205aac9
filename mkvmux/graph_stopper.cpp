#include "mkvmux/graph_stopper.h"

#include <cstdlib>
#include <memory>
#include <system_error>
#include <thread>

#include "win/com_apartment.h"
#include "win/handle.h"

namespace mkvmux {

namespace {

// Shared with the thread, which may outlive the call.
struct Stopping {
    win::ComPtr<IMediaControl> control;
    win::KernelHandle done{CreateEventW(nullptr, TRUE, FALSE, nullptr)};

    [[nodiscard]] bool IsDoneWithin(DWORD ms) const { return WaitForSingleObject(done.Get(), ms) == WAIT_OBJECT_0; }
};

bool IsStopped(IBaseFilter& filter) {
    FILTER_STATE state = State_Paused;
    return SUCCEEDED(filter.GetState(0, &state)) && state == State_Stopped;
}

// A graph whose start one filter refused takes itself for stopped, and its Stop leaves the others paused. It cannot
// disconnect those, and would try to for ever when it is released.
void StopWhatIsLeft(IMediaControl& control) {
    win::ComPtr<IFilterGraph> graph;
    win::ComPtr<IEnumFilters> enumerator;
    if (FAILED(control.QueryInterface(IID_IFilterGraph, graph.PutVoid())) ||
        FAILED(graph->EnumFilters(enumerator.Put()))) {
        return;
    }
    win::ComPtr<IBaseFilter> filter;
    while (enumerator->Next(1, filter.Put(), nullptr) == S_OK) {
        if (!IsStopped(*filter.Get())) {
            filter->Stop();
        }
    }
}

void StopGraph(IMediaControl& control) {
    control.Stop();
    StopWhatIsLeft(control);
}

void StopOnThread(const std::shared_ptr<Stopping>& stopping) {
    {
        const win::ComApartment apartment(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
        StopGraph(*stopping->control.Get());
        stopping->control.Reset(); // before the caller goes on, who may hold the last reference
    }
    SetEvent(stopping->done.Get());
}

bool StartThread(const std::shared_ptr<Stopping>& stopping) {
    if (!stopping->done) {
        return false;
    }
    try {
        std::thread(StopOnThread, stopping).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

// Every filter is paused before the first is stopped. A running muxer is therefore still to be paused, and to stop it
// now would let that start it again, over the finished file.
bool IsStillRunning(IBaseFilter& muxer) {
    FILTER_STATE state = State_Stopped;
    return SUCCEEDED(muxer.GetState(0, &state)) && state == State_Running;
}

} // namespace

bool GraphStopper::Stop(const win::ComPtr<IMediaControl>& control, const win::ComPtr<IBaseFilter>& muxer) const {
    const auto stopping = std::make_shared<Stopping>();
    stopping->control = control;
    if (!StartThread(stopping)) {
        StopGraph(*control.Get()); // without patience rather than not at all
        return true;
    }
    while (!stopping->IsDoneWithin(m_patienceMs)) {
        if (IsStillRunning(*muxer.Get())) {
            continue;
        }
        muxer->Stop(); // waits until the graph's own call has finished the file, or finishes it
        return stopping->IsDoneWithin(m_patienceMs);
    }
    return true;
}

void LeaveAtOnce(int status) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
    std::abort(); // not reached: the call above does not return for one's own process
}

} // namespace mkvmux
