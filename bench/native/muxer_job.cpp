#include "bench/native/muxer_job.h"

#include <exception>
#include <stdexcept>
#include <thread>

#include "bench/native/view_sample.h"
#include "bench/stopwatch.h"

namespace bench {

namespace {

MuxerJob::Types TypesOf(const PacketLoad& load) {
    MuxerJob::Types types;
    for (const LoadTrack& track : load.Tracks()) {
        types.push_back(track.type);
    }
    return types;
}

PacketSource SourceOf(const PacketLoad& load) {
    return [&load](size_t input, UINT64 packet) {
        const auto& packets = load.PacketsOf(input);
        return packet < packets.size() ? &packets[packet] : nullptr;
    };
}

} // namespace

MuxerJob::MuxerJob(const PacketLoad& load, IStream& stream) : MuxerJob(TypesOf(load), SourceOf(load), stream) {}

MuxerJob::MuxerJob(const Types& types, PacketSource source, IStream& stream)
    : m_inputs(types.size()), m_source(std::move(source)), m_setup(types, stream) {}

void MuxerJob::Produce(size_t input) {
    auto& pin = m_setup.Input(input);
    ViewSample sample;
    for (UINT64 i = 0; const LoadPacket* const packet = m_source(input, i); ++i) {
        sample.Show(*packet);
        if (pin.Deliver(sample) != S_OK) {
            throw std::runtime_error("Receive did not take a packet");
        }
    }
    if (sample.References() != 0) {
        throw std::runtime_error("the muxer kept a sample");
    }
}

void MuxerJob::Run() {
    m_setup.Pause();
    std::vector<std::exception_ptr> failures(m_inputs);
    {
        std::vector<std::jthread> threads;
        for (size_t i = 0; i < failures.size(); ++i) {
            threads.emplace_back([this, i, &failure = failures[i]] {
                try {
                    Produce(i);
                } catch (...) {
                    failure = std::current_exception();
                }
                (void)m_setup.Input(i).DeliverEndOfStream();
                if (m_producerDone) {
                    m_producerDone(i);
                }
            });
        }
    }
    m_setup.WaitForEndOfStream();
    const Stopwatch watch;
    m_setup.Stop();
    m_stopSeconds = watch.Seconds();
    for (const auto& failure : failures) {
        if (failure) {
            std::rethrow_exception(failure);
        }
    }
}

} // namespace bench
