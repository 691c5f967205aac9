#include <stdexcept>

#include "bench/native/descriptor_stream.h"
#include "bench/native/muxer_job.h"
#include "bench/native/peers.h"

namespace bench {

void WriteWithOurs(const PacketLoad& load, const std::string& path) {
    DescriptorStream stream(path);
    MuxerJob(load, stream).Run();
    if (stream.Size() < load.Bytes()) {
        throw std::runtime_error("the file is smaller than its payload");
    }
}

} // namespace bench
