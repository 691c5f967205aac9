// CMuxStreaming: starting and stopping of the streams: one for each active input, from the interleaver to its pin.
//
// Owner: the filter; the streams are the interleaver's. Threads: under the filter lock, while no worker runs; the end
// of all waits is seen by any thread. Errors: std::bad_alloc, and what the concrete muxer's hooks throw.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "mux/mux_interleaver.h"

class CBaseMux;
class CBaseMuxInputPin;

class CMuxStreaming {
  public:
    using InputPins = std::vector<std::unique_ptr<CBaseMuxInputPin>>;

    CMuxStreaming(CBaseMux& mux, CMuxInterleaver& interleaver) : m_mux(mux), m_interleaver(interleaver) {}
    CMuxStreaming(const CMuxStreaming&) = delete;
    CMuxStreaming& operator=(const CMuxStreaming&) = delete;

    // Every thread that waits for room, or the worker for packets, gives up soon; until waits are allowed again.
    void EndAllWaits();
    void AllowWaits();
    [[nodiscard]] bool IsAborted() const { return m_abort.load(std::memory_order_acquire); }

    // Makes streams for the active inputs, in their order, and lets the pins feed them.
    void Start(const InputPins& pins);
    // Takes the streams away from the pins and destroys them. Waits must have been ended.
    void Stop(const InputPins& pins);

  private:
    CMuxInterStream* CreateStream(CBaseMuxInputPin& pin);

    CBaseMux& m_mux;                  // not owned: it owns this
    CMuxInterleaver& m_interleaver;   // not owned
    std::atomic<bool> m_abort{false}; // ends the upstream threads' polls
};
