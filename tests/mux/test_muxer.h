// TestMuxer: the smallest concrete muxer: it remembers what it is given and does what the test tells it to.
//
// Owner: its references. Threads: the hooks as CBaseMux says; the records from any thread.
// Errors: as the test's functions answer or throw.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "mux/base_mux.h"
#include "tests/support/watchdog.h"

// A packet as the concrete muxer saw it.
struct SeenPacket {
    INT64 start = 0;
    INT64 stop = 0;
    std::vector<BYTE> bytes;
    bool syncPoint = false;
    bool hasTime = false;
    bool endOfStream = false;
    INT32 streamIndex = -1;
    INT32 pinIndex = -1;
    std::thread::id thread;
};

class TestMuxer final : public CBaseMux {
  public:
    enum class Output { Present, Absent };

    explicit TestMuxer(Output output = Output::Present);
    ~TestMuxer() override;

    static win::ComPtr<TestMuxer> Make(Output output = Output::Present) { return new TestMuxer(output); }

    // ---- What the test tells it; set before streaming ----

    std::function<HRESULT()> onStart;
    std::function<HRESULT()> onStop;
    std::function<void(CMuxInterPacket&, CBaseMuxInputPin&)> onPacket; // before the packet is remembered
    std::function<MuxStreamKind(const CMediaType&)> kindOf;            // else by major type
    std::function<bool(const CMediaType&)> interleavedOf;              // else true
    std::function<bool(int)> activeOf;                                 // else the base's answer
    std::function<HRESULT(const CMediaType&)> acceptsInput;            // else everything

    // ---- What it saw ----

    [[nodiscard]] std::vector<SeenPacket> Seen() const;
    // Waits until so many packets were seen; false when the time is over.
    [[nodiscard]] bool WaitForPackets(size_t count, std::chrono::milliseconds timeout = test_support::kWatchdog) const;
    int starts = 0;
    int stops = 0;

    // ---- Parts that only a concrete muxer sees ----

    using CAMThread::CallWorker;
    using CAMThread::ThreadExists;
    [[nodiscard]] CBaseMuxInputPin& InputPin(size_t index) { return *m_inputPins.at(index); }
    [[nodiscard]] CBaseMuxOutputPin* OutputPin() { return m_outputPin.get(); }
    [[nodiscard]] IStream* Downstream() { return m_downstream.Get(); }
    [[nodiscard]] FILTER_STATE State() const { return m_State; }

    // CBaseMux
    HRESULT CheckInputType(const CMediaType* type) override;
    HRESULT OnStartStreaming() override;
    HRESULT OnStopStreaming() override;
    int ProcessPacket(CMuxInterPacket* packet, CBaseMuxInputPin* pin) override;
    bool IsStreamInterleaved(const CMediaType* type) override;
    MuxStreamKind GetStreamKind(const CMediaType* type) override;
    bool IsInputActive(int pinIndex) override;

  private:
    mutable std::mutex m_seenLock; // guards m_seen
    mutable std::condition_variable m_seenMore;
    std::vector<SeenPacket> m_seen;
};
