#include "fuzz/schedule_check.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "fuzz/require.h"
#include "tests/support/layout_check.h"

namespace fuzz {

using namespace test_support;

namespace {

constexpr std::int64_t kNsPerTick = 1'000'000;
constexpr std::int64_t kNsPerUnit = 100;

[[noreturn]] void Fail(const std::string& what) {
    std::fprintf(stderr, "schedule: %s\n", what.c_str());
    std::abort();
}

void Check(bool holds, const std::string& what) {
    if (!holds) {
        Fail(what);
    }
}

bool IsVideo(FeederKind kind) {
    return kind == FeederKind::Vfw || kind == FeederKind::ByteStream;
}

bool IsSubtitle(FeederKind kind) {
    return kind == FeederKind::Text || kind == FeederKind::Ass;
}

std::vector<FoundSample> SamplesOf(const LayoutBlock& block) {
    Check(block.frames.size() == 1, "a block has several frames");
    return SamplesIn(block.frames.front());
}

// ---- The rule for frames -----------------------------------------------------------------------------------------

// A frame is a sample and the untimed ones behind it.
struct Frame {
    std::vector<SentSample> samples; // those without data left out
    SentSample first;                // which may be without data
};

bool HasTime(const SentSample& sample, FeederKind kind) {
    return sample.step.start.has_value() || kind == FeederKind::Mp3; // that one's clock runs without
}

void AppendFrame(std::vector<Frame>& frames, std::vector<SentSample>& pending) {
    if (pending.empty()) {
        return;
    }
    Frame frame{{}, pending.front()};
    std::ranges::copy_if(pending, std::back_inserter(frame.samples),
                         [](const SentSample& sample) { return sample.step.size > 0; });
    if (!frame.samples.empty()) {
        frames.push_back(std::move(frame));
    }
    pending.clear();
}

std::vector<Frame> FramesOf(const Feeder& feeder) {
    std::vector<Frame> frames;
    std::vector<SentSample> pending;
    for (const SentSample& sample : feeder.Sent()) {
        if (!sample.isTaken) {
            continue;
        }
        if (HasTime(sample, feeder.Kind())) {
            AppendFrame(frames, pending);
        }
        pending.push_back(sample);
    }
    for (SentSample& held : pending) { // at the end they go one by one
        std::vector<SentSample> alone{held};
        AppendFrame(frames, alone);
    }
    return frames;
}

// ---- Times -------------------------------------------------------------------------------------------------------

struct ExpectedTime {
    std::int64_t startNs = 0;
    std::int64_t durationNs = 0;
};

ExpectedTime TimeOf(const Frame& frame, std::int64_t shift) {
    std::int64_t start = frame.first.step.start.value_or(0);
    std::int64_t stop = frame.first.step.stop.value_or(start);
    start += shift;
    stop += shift;
    if (start < 0) { // with its length kept
        stop -= start;
        start = 0;
    }
    return {start * kNsPerUnit, std::max<std::int64_t>(stop - start, 0) * kNsPerUnit};
}

void CheckTime(const LayoutBlock& block, const Frame& frame, std::int64_t shift) {
    const ExpectedTime expected = TimeOf(frame, shift);
    const std::int64_t awayNs = block.time * kNsPerTick - expected.startNs;
    Check(std::abs(awayNs) < kNsPerTick, "a block is at " + std::to_string(block.time) + " ms instead of at " +
                                             std::to_string(expected.startNs) + " ns");
    Check(!block.duration || static_cast<std::int64_t>(*block.duration) == expected.durationNs / kNsPerTick,
          "a block lasts " + std::to_string(block.duration.value_or(0)) + " ms instead of " +
              std::to_string(expected.durationNs) + " ns");
}

void CheckFrame(const LayoutBlock& block, const Frame& frame, FeederKind kind) {
    const auto found = SamplesOf(block);
    Check(found.size() == frame.samples.size(), "a frame of " + std::to_string(frame.samples.size()) +
                                                    " samples has become one of " + std::to_string(found.size()));
    for (size_t i = 0; i < found.size(); ++i) {
        Check(found[i].serial == frame.samples[i].serial, "sample " + std::to_string(frame.samples[i].serial) +
                                                              " is missing; there is " +
                                                              std::to_string(found[i].serial));
    }
    Check(block.simple != IsSubtitle(kind), "a block is of the wrong kind");
    Check(block.duration.has_value() == IsSubtitle(kind), "a block has a duration, or has none");
    Check(block.keyframe == (!IsVideo(kind) || frame.first.step.syncPoint), "a block has the wrong keyframe flag");
}

void CheckFrames(const std::vector<LayoutBlock>& blocks, const Feeder& feeder) {
    const std::vector<Frame> frames = FramesOf(feeder);
    Check(blocks.size() == frames.size(),
          "there are " + std::to_string(blocks.size()) + " blocks of " + std::to_string(frames.size()) + " frames");
    const std::int64_t first = frames.empty() ? 0 : frames.front().first.step.start.value_or(0);
    const bool areTimesKnown = !feeder.HasExtremeTimes() && feeder.Kind() != FeederKind::Mp3;
    for (size_t i = 0; i < frames.size(); ++i) {
        CheckFrame(blocks[i], frames[i], feeder.Kind());
        if (areTimesKnown) {
            CheckTime(blocks[i], frames[i], first < 0 ? -first : 0);
        }
    }
}

// ---- Clusters ----------------------------------------------------------------------------------------------------

struct TakenCluster {
    std::uint64_t position = 0;
    std::vector<BYTE> bytes;
};

// How long the element is that the bytes begin with, if it is a cluster.
std::optional<std::uint64_t> ClusterBytes(std::span<const BYTE> bytes) {
    const auto id = ReadEbmlId(bytes);
    if (!id || id->value != ebml_id::kCluster) {
        return std::nullopt;
    }
    const auto size = ReadEbmlSize(bytes.subspan(id->length));
    return size ? std::optional(id->length + size->length + size->value) : std::nullopt;
}

// A cluster leaves in one write, or in several that follow each other.
std::vector<TakenCluster> TakenClusters(const std::vector<RecordedWrite>& writes) {
    std::vector<TakenCluster> clusters;
    for (size_t i = 0; i < writes.size(); ++i) {
        const auto size = ClusterBytes(writes[i].bytes);
        if (!size) {
            continue;
        }
        TakenCluster cluster{writes[i].position, {}};
        for (size_t part = i; part < writes.size() && writes[part].isTaken && cluster.bytes.size() < *size &&
                              writes[part].position == cluster.position + cluster.bytes.size();
             ++part) {
            cluster.bytes.insert(cluster.bytes.end(), writes[part].bytes.begin(), writes[part].bytes.end());
        }
        if (cluster.bytes.size() == *size) {
            clusters.push_back(std::move(cluster));
        }
    }
    return clusters;
}

// What a lost cluster leaves behind, the next one takes the place of, if the stream seeks. The head must have arrived,
// and no patch of it may have been torn.
bool IsReadable(const PlannedStream& stream) {
    const auto& writes = stream.Writes();
    const auto first =
        std::ranges::find_if(writes, [](const RecordedWrite& write) { return ClusterBytes(write.bytes).has_value(); });
    const auto isWhole = [](const RecordedWrite& write) { return write.isTaken; };
    const auto leavesHead = [first](const RecordedWrite& write) {
        return !write.isTorn || write.position >= first->position;
    };
    return stream.Failed(StreamOperation::Seek) == 0 && std::all_of(writes.begin(), first, isWhole) &&
           std::all_of(first, writes.end(), leavesHead);
}

} // namespace

void CheckLayoutOf(const MatroskaLayout& layout) {
    LayoutExpectations expected;
    expected.clustersMayGoBack = true; // the times do
    const auto findings = CheckLayout(layout, expected);
    Check(findings.empty(), findings.empty() ? "" : "the reader does not accept the file: " + findings.front());
}

void CheckOrder(const MatroskaLayout& layout, const Feeders& feeders) {
    std::map<std::uint8_t, std::uint64_t> trackOf;
    for (const LayoutTrack& track : layout.tracks) {
        std::uint32_t last = 0;
        for (const LayoutBlock& block : layout.BlocksOf(track.number)) {
            for (const FoundSample& found : SamplesOf(block)) {
                Check(found.feeder < feeders.size(), "a sample of nobody");
                Check(trackOf.try_emplace(found.feeder, track.number).first->second == track.number,
                      "one input's samples are in two tracks");
                const auto& sent = feeders[found.feeder].Sent();
                const auto sample = std::ranges::find(sent, found.serial, &SentSample::serial);
                Check(sample != sent.end() && sample->step.size == found.size,
                      "sample " + std::to_string(found.serial) + " was not sent in this run");
                Check(found.serial > last,
                      "sample " + std::to_string(found.serial) + " is behind sample " + std::to_string(last));
                last = found.serial;
            }
        }
    }
}

void CheckAllThere(const MatroskaLayout& layout, const Feeders& feeders) {
    std::map<std::uint8_t, std::vector<LayoutBlock>> blocksOf;
    for (const LayoutTrack& track : layout.tracks) {
        const auto blocks = layout.BlocksOf(track.number);
        if (!blocks.empty()) {
            blocksOf[SamplesOf(blocks.front()).front().feeder] = blocks;
        }
    }
    for (size_t i = 0; i < feeders.size(); ++i) {
        CheckFrames(blocksOf[static_cast<std::uint8_t>(i)], feeders[i]);
    }
}

void CheckTakenClusters(const PlannedStream& stream) {
    const std::vector<BYTE> file = stream.Bytes();
    const MatroskaLayout layout = ReadLayout(file);
    for (const TakenCluster& cluster : TakenClusters(stream.Writes())) {
        const bool isThere = cluster.position + cluster.bytes.size() <= file.size() &&
                             std::equal(cluster.bytes.begin(), cluster.bytes.end(),
                                        file.begin() + static_cast<std::ptrdiff_t>(cluster.position));
        Check(isThere, "the cluster that was written at " + std::to_string(cluster.position) + " is not there");
        const bool isFound = std::ranges::count(layout.clusters, cluster.position, &LayoutCluster::offset) == 1;
        Check(isFound || !IsReadable(stream),
              "the reader does not find the cluster at " + std::to_string(cluster.position));
    }
}

} // namespace fuzz
