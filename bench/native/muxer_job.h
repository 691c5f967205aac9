// MuxerJob: our muxer with a load in front of it and a stream behind it; every input delivers from a thread of its own,
// as fast as it is let.
//
// Units: seconds. Owner: the measurement; load and stream outlive it. Threads: one makes and runs it.
// Errors: std::runtime_error.
#pragma once

#include <functional>

#include "bench/muxer_setup.h"
#include "bench/native/packet_load.h"

namespace bench {

class MuxerJob {
  public:
    MuxerJob(const PacketLoad& load, IStream& stream);

    // From the first Receive until Stop has returned and the file is finished.
    void Run();
    // Called on each producer's thread when it is done, with its input's number.
    void OnProducerDone(std::function<void(size_t)> done) { m_producerDone = std::move(done); }
    // Called on each producer's thread before each packet.
    void BeforePacket(std::function<void(const LoadPacket&)> before) { m_before = std::move(before); }
    // What Stop took of the last run.
    [[nodiscard]] double StopSeconds() const { return m_stopSeconds; }

  private:
    void Produce(size_t input);

    const PacketLoad& m_load;
    MuxerSetup m_setup;
    std::function<void(size_t)> m_producerDone;
    std::function<void(const LoadPacket&)> m_before;
    double m_stopSeconds = 0.0;
};

} // namespace bench
