// CStreamGate: lets an upstream thread use the input's stream, and keeps the stream alive until it has left again.
//
// Owner: the input pin; the stream is the interleaver's.
// Threads: Pass on upstream threads, which take no lock unless Close waits for them; Open and Close by the filter's
// state changes, which first end every wait that a thread inside may be in, so Close never waits long. Close must not
// be called from inside.
#pragma once

#include <atomic>

#include "mux/cache_line.h"
#include "win/condition_variable.h"
#include "win/critical_section.h"

class CMuxInterStream;

class CStreamGate {
  public:
    // One thread's stay inside; no stream when the gate is closed.
    class Pass {
      public:
        explicit Pass(CStreamGate& gate) : m_gate(gate), m_stream(gate.Enter()) {}
        ~Pass() {
            if (m_stream != nullptr) {
                m_gate.Leave();
            }
        }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

        [[nodiscard]] CMuxInterStream* Stream() const { return m_stream; }

      private:
        CStreamGate& m_gate;
        CMuxInterStream* const m_stream;
    };

    void Open(CMuxInterStream* stream);
    // Returns when nobody is inside any more.
    void Close();
    // For threads that streaming outlives: the worker, the state changes.
    [[nodiscard]] CMuxInterStream* Stream() const { return m_stream.load(); }

  private:
    CMuxInterStream* Enter();
    void Leave();

    // All sequentially consistent: of two threads that each write one and then read another, one sees the other's.
    std::atomic<CMuxInterStream*> m_stream{nullptr}; // not owned; null while closed
    std::atomic<bool> m_closing{false};              // somebody sleeps until the last one has left
    win::CriticalSection m_lock;
    win::ConditionVariable m_left QRX_GUARDED_BY(m_lock);
    [[maybe_unused]] CacheLineGap m_gap{}; // between what the worker reads and what is written twice a sample
    std::atomic<int> m_inside{0};
};
