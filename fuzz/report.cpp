// Bytes as a file that a page is written about: what is measured keeps its bounds, the page is as long as those allow,
// and nothing of the file gets into it but as text.
#include <cstdint>
#include <string>

#include "fuzz/read_all.h"
#include "fuzz/require.h"
#include "report/file_survey.h"
#include "report/page.h"

namespace {

using fuzz::Require;

constexpr size_t kMostTracks = 1000;
constexpr size_t kMostPageBytes = size_t{64} << 20;

void CheckBounds(const report::FileFacts& facts) {
    Require(facts.tracks.size() <= kMostTracks);
    Require(facts.timeline.Cells() <= report::Timeline::kMostCells);
    for (const report::TrackReport& track : facts.tracks) {
        Require(track.begin <= track.end && track.keyframes <= track.blocks);
        Require(track.gaps.size() <= track.gapCount);
        UINT64 bytes = 0;
        UINT64 blocks = 0;
        for (const report::Cell& cell : facts.timeline.Row(track.row)) {
            bytes += cell.bytes;
            blocks += cell.blocks;
        }
        Require(bytes == track.bytes && blocks == track.blocks);
    }
    for (const report::Damage& damage : facts.damages) {
        Require(damage.from <= damage.to && damage.to <= facts.bytes);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    const auto bytes = fuzz::SourceOf(data, size);
    try {
        UINT64 last = 0;
        report::FileSurvey survey(*bytes, [&](UINT64 done, UINT64 all) {
            Require(done >= last && done <= all);
            last = done;
        });
        const report::FileFacts facts = survey.Read();
        CheckBounds(facts);
        const std::string page = report::PageOf(facts, "<script>");
        Require(page.size() <= kMostPageBytes);
        Require(page.find("<script") == std::string::npos && page.find("<img") == std::string::npos);
    } catch (const report::NoMatroskaFile&) {
        return 0;
    }
    return 0;
}
