#include "tests/faults/file_judge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>
#include <optional>
#include <string>

#include "tests/support/layout_check.h"

using namespace test_support;

namespace faults {

namespace {

constexpr BYTE kClusterId[] = {0x1f, 0x43, 0xb6, 0x75};

constexpr uint32_t kTag = 0x7373;
constexpr uint32_t kSimpleTag = 0x67c8;
constexpr uint32_t kTagName = 0x45a3;
constexpr uint32_t kTagString = 0x4487;

bool BeginsCluster(ByteView bytes) {
    return bytes.size() >= std::size(kClusterId) && std::ranges::equal(bytes.first(std::size(kClusterId)), kClusterId);
}

// Of an element's head and data; the identifier has four bytes.
size_t WholeSize(ByteView element) {
    const size_t length = static_cast<size_t>(std::countl_zero(element[4])) + 1;
    uint64_t size = element[4] & (0xffu >> length);
    for (size_t i = 1; i < length; ++i) {
        size = size << 8 | element[4 + i];
    }
    return 4 + length + static_cast<size_t>(size);
}

Bytes operator+(Bytes left, ByteView right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

std::string SimpleTagOf(const MatroskaLayout& layout, const EbmlElement& tag, const std::string& name) {
    for (const EbmlElement* const simple : tag.Children(kSimpleTag)) {
        const EbmlElement* const text = simple->Child(kTagString);
        if (text != nullptr && TextOf(layout.file, *simple->Child(kTagName)) == name) {
            return TextOf(layout.file, *text);
        }
    }
    return "no " + name;
}

auto FirstClusterWrite(const Outcome& outcome) {
    return std::ranges::find_if(outcome.writes, [](const KeptWrite& write) { return BeginsCluster(write.bytes); });
}

// The file up to the end of its Segment.
Bytes UpToItsEnd(const Bytes& file) {
    const auto layout = ReadLayout(file);
    if (layout.Segment() == nullptr || layout.Segment()->unknownSize) {
        return file;
    }
    return {file.begin(), file.begin() + static_cast<ptrdiff_t>(layout.Segment()->End())};
}

} // namespace

FileJudge::FileJudge(const FaultRig& rig, const Outcome& faultless) : m_rig(rig) {
    for (const KeptWrite& write : faultless.writes) {
        if (BeginsCluster(write.bytes)) {
            break;
        }
        m_head = std::move(m_head) + write.bytes;
    }
}

size_t FileJudge::FirstCluster(const Outcome& outcome) {
    const auto first = FirstClusterWrite(outcome);
    return first == outcome.writes.end() ? outcome.file.size() : first->position;
}

bool FileJudge::IsOfHead(const Outcome& outcome, size_t index) {
    const auto inFront = static_cast<size_t>(FirstClusterWrite(outcome) - outcome.writes.begin());
    return index < inFront || outcome.writes[index].position < FirstCluster(outcome);
}

// A cluster with large frames takes several writes, one behind the other.
Frames FileJudge::TakenByOutput(const Outcome& outcome) const {
    Frames taken;
    const auto& writes = outcome.writes;
    for (size_t i = 0; i < writes.size(); ++i) {
        if (!BeginsCluster(writes[i].bytes)) {
            continue;
        }
        const size_t size = WholeSize(writes[i].bytes);
        Bytes cluster;
        for (size_t j = i; j < writes.size() && writes[j].IsWhole() && cluster.size() < size; ++j) {
            cluster = std::move(cluster) + writes[j].bytes;
        }
        if (cluster.size() >= size) {
            const Bytes file = m_head + cluster;
            taken.merge(FramesOf(ReadLayout(file)));
        }
    }
    return taken;
}

Frames FileJudge::InFile(const Bytes& file) const {
    return FramesOf(ReadLayout(UpToItsEnd(file)));
}

Frames FileJudge::InClusters(const Outcome& outcome) const {
    const Bytes& file = outcome.file;
    const auto behind = ByteView(file).subspan(std::min(file.size(), FirstCluster(outcome)));
    return FramesOf(ReadLayout(m_head + behind));
}

Frames FileJudge::FramesOf(const MatroskaLayout& layout) const {
    Frames frames;
    for (size_t input = 0; input < kInputs; ++input) {
        size_t next = 0;
        for (const LayoutBlock& block : layout.BlocksOf(input + 1)) {
            const Bytes payload(block.frames.front().begin(), block.frames.front().end());
            const size_t number = payload.back();
            EXPECT_EQ(payload, m_rig.PayloadOf(static_cast<Input>(input), number));
            EXPECT_GE(number, next) << "of input " << input << ": twice or too late";
            next = number + 1;
            frames.insert({input, number});
        }
    }
    return frames;
}

void FileJudge::ExpectSound(const Bytes& file, bool mayBeCut) const {
    const Bytes whole = UpToItsEnd(file);
    const auto layout = ReadLayout(whole);
    ASSERT_NE(layout.Segment(), nullptr);
    const bool isCut = layout.Segment()->unknownSize;
    EXPECT_TRUE(mayBeCut || !isCut) << "it was not finished";
    EXPECT_TRUE(mayBeCut || whole.size() == file.size()) << "something lies behind its end";
    for (const auto& finding : CheckLayout(layout, {.cut = isCut, .strict = m_rig.What().IsStrict()})) {
        ADD_FAILURE() << finding;
    }
    EXPECT_EQ(kInputs, layout.tracks.size());
    const Frames frames = FramesOf(layout);
    const EbmlElement* const tags = layout.Segment()->Child(ebml_id::kTags);
    const bool hasStatistics = tags != nullptr && tags->Children(kTag).size() > UserTags();
    if (!mayBeCut) {
        ExpectDuration(layout, frames);
        EXPECT_EQ(m_rig.What().IsStrict(), hasStatistics);
        EXPECT_EQ(m_rig.What().isAnnotated, layout.Segment()->Child(ebml_id::kChapters) != nullptr);
    }
    if (hasStatistics) {
        ExpectStatistics(layout, frames);
    }
}

// A strict file without any block has none.
void FileJudge::ExpectDuration(const MatroskaLayout& layout, const Frames& frames) const {
    const auto last = std::ranges::max_element(frames, {}, &Frame::number);
    const size_t end = last == frames.end() ? 0 : last->number + 1;
    const bool hasNone = end == 0 && m_rig.What().IsStrict();
    EXPECT_EQ(hasNone ? std::nullopt : std::optional(static_cast<double>(end * kFrameMs)), layout.duration)
        << "of what is there";
}

void FileJudge::ExpectStatistics(const MatroskaLayout& layout, const Frames& frames) const {
    std::array<size_t, kInputs> counts{};
    std::array<size_t, kInputs> bytes{};
    for (const Frame& frame : frames) {
        ++counts[frame.input];
        bytes[frame.input] += m_rig.PayloadOf(static_cast<Input>(frame.input), frame.number).size();
    }
    const auto tags = layout.Segment()->Child(ebml_id::kTags)->Children(kTag);
    ASSERT_EQ(UserTags() + kInputs, tags.size());
    for (size_t input = 0; input < kInputs; ++input) {
        const EbmlElement& tag = *tags[UserTags() + input];
        EXPECT_EQ(std::to_string(counts[input]), SimpleTagOf(layout, tag, "NUMBER_OF_FRAMES")) << input;
        EXPECT_EQ(std::to_string(bytes[input]), SimpleTagOf(layout, tag, "NUMBER_OF_BYTES")) << input;
    }
}

Frames FileJudge::TakenByFilter(const Outcome& outcome) {
    Frames taken;
    for (size_t input = 0; input < kInputs; ++input) {
        for (const size_t number : outcome.taken[input]) {
            taken.insert({input, number});
        }
    }
    return taken;
}

} // namespace faults
