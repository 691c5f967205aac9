#include <cstring>
#include <stdexcept>

#include "bench/baselines.h"
#include "bench/stopwatch.h"
#include "mkv/cluster_rule.h"

namespace bench {

double CopySeconds(const Load& load) {
    std::vector<BYTE> cluster(mkv::kMaxClusterPayloadBytes);
    const size_t bytes = load.payload.size();
    size_t used = 0;
    UINT64 checksum = 0; // keeps the copies from being left out
    const Stopwatch watch;
    for (UINT64 packet = 0; packet < load.TotalPackets(); ++packet) {
        used = used + bytes > cluster.size() ? 0 : used;
        std::memcpy(cluster.data() + used, load.payload.data(), bytes);
        checksum += cluster[used + bytes - 1];
        used += bytes;
    }
    const double seconds = watch.Seconds();
    if (checksum != load.TotalPackets() * load.payload.back()) {
        throw std::runtime_error("memcpy did not copy");
    }
    return seconds;
}

} // namespace bench
