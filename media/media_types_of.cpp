#include "media/media_types_of.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "media/codec_table.h"

namespace media {

std::vector<CMediaType> MediaTypesOf(const TrackFacts& track) {
    std::vector<CMediaType> types;
    std::vector<CMediaType> poorer; // they leave something out
    for (const CodecRow& row : CodecTable()) {
        if (!row.ReadsFrom(track)) {
            continue;
        }
        if (std::optional<CMediaType> type = row.layout->typeOf(row, track)) {
            const auto leavesOut = row.layout->leavesOut;
            (leavesOut != nullptr && leavesOut(track) ? poorer : types).push_back(std::move(*type));
        }
    }
    std::move(poorer.begin(), poorer.end(), std::back_inserter(types));
    return types;
}

} // namespace media
