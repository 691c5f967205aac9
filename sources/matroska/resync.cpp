#include "sources/matroska/resync.h"

#include <algorithm>
#include <array>

#include <matroska/KaxCluster.h>
#include <matroska/KaxContexts.h>

namespace matroska {

namespace {

using libmatroska::KaxCluster;

constexpr size_t kWindowBytes = size_t{32} * 1024;
constexpr std::array<BYTE, 4> kClusterId{0x1f, 0x43, 0xb6, 0x75};

// Four bytes alone may be chance: what follows must be a part of a cluster.
bool IsCluster(const EbmlReader& reader, UINT64 position, UINT64 limit) {
    const std::optional<Element> cluster = reader.ElementAt(position, limit);
    if (!cluster || cluster->id != IdOf<KaxCluster>()) {
        return false;
    }
    const std::optional<Element> child = reader.ElementAt(cluster->data, cluster->end);
    return child && MayContain<KaxCluster>(child->id);
}

} // namespace

UINT64 FindCluster(const EbmlReader& reader, UINT64 position, UINT64 limit) {
    std::vector<BYTE> window(kWindowBytes);
    while (position < limit) {
        const size_t wanted = static_cast<size_t>(std::min<UINT64>(window.size(), limit - position));
        const size_t got = reader.Source().ReadAt(position, std::span(window).first(wanted));
        const auto end = window.begin() + static_cast<std::ptrdiff_t>(got);
        auto found = std::search(window.begin(), end, kClusterId.begin(), kClusterId.end());
        while (found != end) {
            const UINT64 candidate = position + static_cast<UINT64>(found - window.begin());
            if (IsCluster(reader, candidate, limit)) {
                return candidate;
            }
            found = std::search(found + 1, end, kClusterId.begin(), kClusterId.end());
        }
        if (got < kClusterId.size() || got < wanted) {
            break;
        }
        position += got - (kClusterId.size() - 1); // the identifier may lie across two windows
        if (position + kClusterId.size() > limit) {
            break;
        }
    }
    return limit;
}

} // namespace matroska
