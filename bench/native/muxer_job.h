// MuxerJob: our muxer with sources in front of it and a stream behind it; every input delivers from a thread of its
// own, as fast as it is let.
//
// Units: seconds. Owner: the measurement; packets and stream outlive it. Threads: one makes and runs it.
// Errors: std::runtime_error.
#pragma once

#include <functional>
#include <vector>

#include "bench/muxer_setup.h"
#include "bench/native/packet_load.h"

namespace bench {

// The nth packet of an input, or null behind its last one; called on the input's thread.
using PacketSource = std::function<const LoadPacket*(size_t input, UINT64 packet)>;

class MuxerJob {
  public:
    using Types = std::vector<test_support::MediaTypeValue>;

    MuxerJob(const PacketLoad& load, IStream& stream);
    MuxerJob(const Types& types, PacketSource source, IStream& stream);

    // From the first Receive until Stop has returned and the file is finished.
    void Run();
    // Called on each producer's thread when it is done, with its input's number.
    void OnProducerDone(std::function<void(size_t)> done) { m_producerDone = std::move(done); }
    [[nodiscard]] CMatroskaMuxer& Muxer() const { return m_setup.Muxer(); }
    // What Stop took of the last run.
    [[nodiscard]] double StopSeconds() const { return m_stopSeconds; }

  private:
    void Produce(size_t input);

    const size_t m_inputs;
    const PacketSource m_source;
    MuxerSetup m_setup;
    std::function<void(size_t)> m_producerDone;
    double m_stopSeconds = 0.0;
};

} // namespace bench
