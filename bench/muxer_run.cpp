#include "bench/muxer_run.h"

#include <exception>
#include <latch>
#include <thread>

#include "bench/muxer_setup.h"
#include "bench/producer.h"
#include "bench/stopwatch.h"
#include "bench/uncounted_section.h"

namespace bench {

namespace {

// The producers' threads, which begin together.
class Producers {
  public:
    Producers(const Load& load, MuxerSetup& setup) : m_start(1), m_failures(load.inputs) {
        for (size_t i = 0; i < load.inputs; ++i) {
            m_threads.emplace_back([&, i] { Run(load, setup.Input(i), m_failures[i]); });
        }
    }

    void Start() {
        const UncountedSection uncounted;
        m_start.count_down();
    }

    // Rethrows what ended one of them.
    void Join() {
        const UncountedSection uncounted;
        m_threads.clear();
        for (const auto& failure : m_failures) {
            if (failure) {
                std::rethrow_exception(failure);
            }
        }
    }

  private:
    void Run(const Load& load, test_support::FakeUpstreamPin& input, std::exception_ptr& failure) {
        try {
            Producer producer(load, input);
            WaitForStart();
            producer.Deliver(load.packetsPerInput);
            producer.DeliverEndOfStream();
        } catch (...) {
            failure = std::current_exception();
            input.DeliverEndOfStream(); // so that the run comes to an end
        }
    }

    void WaitForStart() {
        const UncountedSection uncounted;
        m_start.wait();
    }

    std::latch m_start;
    std::vector<std::exception_ptr> m_failures; // one a thread
    std::vector<std::jthread> m_threads;        // the last, since they use the others
};

} // namespace

double MuxSeconds(const Load& load, IStream& stream) {
    MuxerSetup setup(load, stream);
    setup.Pause();
    Producers producers(load, setup);
    const Stopwatch watch;
    producers.Start();
    producers.Join();
    setup.WaitForEndOfStream();
    setup.Stop();
    return watch.Seconds();
}

} // namespace bench
