#include "media/media_types_of.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <span>

#include "media/codec_table.h"
#include "media/strict_codec_table.h"

namespace media {

namespace {

struct FoundTypes {
    std::vector<CMediaType> whole;
    std::vector<CMediaType> poorer; // they leave something out
};

void FindTypes(std::span<const CodecRow> rows, const TrackFacts& track, FoundTypes& found) {
    for (const CodecRow& row : rows) {
        if (!row.ReadsFrom(track)) {
            continue;
        }
        if (std::optional<CMediaType> type = row.layout->typeOf(row, track)) {
            const auto leavesOut = row.layout->leavesOut;
            (leavesOut != nullptr && leavesOut(track) ? found.poorer : found.whole).push_back(std::move(*type));
        }
    }
}

} // namespace

std::vector<CMediaType> MediaTypesOf(const TrackFacts& track) {
    FoundTypes found;
    FindTypes(CodecTable(), track, found);
    FindTypes(StrictCodecTable(), track, found);
    std::move(found.poorer.begin(), found.poorer.end(), std::back_inserter(found.whole));
    return std::move(found.whole);
}

} // namespace media
