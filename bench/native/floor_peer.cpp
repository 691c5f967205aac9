#include <cstring>

#include <unistd.h>

#include "bench/native/descriptor_stream.h"
#include "bench/native/peers.h"
#include "mkv/cluster_rule.h"

namespace bench {

namespace {

constexpr size_t kBlockHeadBytes = 9; // identifier, size, track, time, flags

} // namespace

void GatherAndWrite(const PacketLoad& load, const std::string& path) {
    const int file = OpenInPlace(path);
    std::vector<BYTE> cluster(mkv::kMaxClusterPayloadBytes);
    size_t used = 0;
    for (const LoadPacket& packet : load.Packets()) {
        const size_t bytes = kBlockHeadBytes + packet.size;
        if (used + bytes > cluster.size()) {
            WriteAll(file, cluster.data(), used);
            used = 0;
        }
        std::memset(cluster.data() + used, static_cast<int>(packet.track), kBlockHeadBytes);
        std::memcpy(cluster.data() + used + kBlockHeadBytes, packet.data, packet.size);
        used += bytes;
    }
    WriteAll(file, cluster.data(), used);
    close(file);
}

} // namespace bench
