// Producer: delivers packets of a load through one input, as an upstream filter does.
//
// Units: times in 100 ns. Owner: the measurement; input and load outlive it. Threads: one.
// Errors: std::runtime_error when the input does not take a packet.
#pragma once

#include "bench/load.h"
#include "tests/support/fake_media_sample.h"
#include "tests/support/fake_upstream_pin.h"

namespace bench {

class Producer {
  public:
    Producer(const Load& load, test_support::FakeUpstreamPin& input);

    // The next packets of the load.
    void Deliver(UINT64 packets);
    void DeliverEndOfStream();
    // Leaves a gap in the times before the next packet.
    void SkipTime(INT64 ticks) { m_gap += ticks; }

  private:
    const Load& m_load;
    test_support::FakeUpstreamPin& m_input;
    test_support::FakeMediaSample m_sample; // one for all packets: the muxer copies and keeps none
    UINT64 m_next = 0;
    INT64 m_gap = 0;
};

} // namespace bench
