#include "bench/producer.h"

#include <stdexcept>

namespace bench {

Producer::Producer(const Load& load, test_support::FakeUpstreamPin& input)
    : m_load(load), m_input(input), m_sample(load.payload) {}

void Producer::Deliver(UINT64 packets) {
    for (UINT64 i = 0; i < packets; ++i, ++m_next) {
        const INT64 start = m_gap + m_load.StartOf(m_next);
        m_sample.WithTimes(start, start + m_load.packetTicks).WithSyncPoint(m_load.IsKeyframe(m_next));
        if (m_input.Deliver(m_sample) != S_OK) {
            throw std::runtime_error("Receive did not take a packet");
        }
    }
}

void Producer::DeliverEndOfStream() {
    if (FAILED(m_input.DeliverEndOfStream())) {
        throw std::runtime_error("EndOfStream failed");
    }
}

} // namespace bench
