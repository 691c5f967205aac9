#include "mkvmux/index_room.h"

#include <algorithm>
#include <filesystem>

#include "dshow/ref_time.h"

namespace mkvmux {

namespace {

// Half a megabit a second, less than most have: a file is rather taken for too long.
constexpr UINT64 kFewBytesASecond = 62500;
constexpr UINT64 kMostSeconds = UINT64{30} * 24 * 3600;

REFERENCE_TIME LengthByStreams(const MuxGraph& graph) {
    REFERENCE_TIME longest = 0;
    for (const SourceStream& stream : graph.Streams()) {
        longest = std::max(longest, stream.Duration());
    }
    return longest;
}

REFERENCE_TIME LengthBySize(const Options& options) {
    UINT64 largest = 0;
    for (const InputOptions& input : options.inputs) {
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(input.path, error);
        largest = std::max<UINT64>(largest, error ? 0 : size);
    }
    const UINT64 seconds = std::min(largest / kFewBytesASecond + 1, kMostSeconds);
    return static_cast<REFERENCE_TIME>(seconds) * kReferenceTimesPerSecond;
}

} // namespace

MuxReservedIndex IndexRoomFor(const MuxGraph& graph, const Options& options) {
    if (options.indexBytes) {
        return {*options.indexBytes, 0};
    }
    const REFERENCE_TIME length = LengthByStreams(graph);
    return {0, length > 0 ? length : LengthBySize(options)};
}

} // namespace mkvmux
