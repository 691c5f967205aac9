#include "mkv/cluster_bytes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr size_t kLarge = mkv::CClusterBytes::kMinTakenOverBytes;

std::span<const BYTE> View(const std::string& text) {
    return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

win::OwnedBytes Owned(const std::string& text) {
    auto bytes = std::make_unique<BYTE[]>(text.size());
    std::copy(text.begin(), text.end(), bytes.get());
    return bytes;
}

std::string Joined(mkv::CClusterBytes& cluster, const std::string& head = {}) {
    std::string text;
    for (const auto part : cluster.partsBehind(View(head))) {
        text.append(part.begin(), part.end());
    }
    return text;
}

// Counts what comes back, and frees it.
class CountingHome : public win::ByteHome {
  public:
    void TakeBack(BYTE* bytes) noexcept override {
        ++returned;
        delete[] bytes;
    }
    win::OwnedBytes Give(size_t size) { return {new BYTE[size](), win::ByteReturn(*this)}; }
    int returned = 0;
};

TEST(ClusterBytesTest, BytesAreCopiedAndStayWhileOthersAreAdded) {
    mkv::CClusterBytes cluster;
    std::vector<BYTE> frame{1, 2, 3};
    cluster.append({}, {frame}, {});
    frame.assign(3, 9);
    for (int i = 0; i < 100000; ++i) {
        cluster.append({}, {frame}, {});
    }
    const auto& parts = cluster.partsBehind({});
    ASSERT_EQ(parts.size(), 1u);
    ASSERT_EQ(parts[0].size(), 300003u);
    EXPECT_EQ(std::vector<BYTE>(parts[0].begin(), parts[0].begin() + 6), (std::vector<BYTE>{1, 2, 3, 9, 9, 9}));
    EXPECT_NE(parts[0].data(), frame.data());
    EXPECT_EQ(cluster.payloadBytes(), 300003u);
}

TEST(ClusterBytesTest, EverythingLiesInOnePieceInItsOrderBehindTheHead) {
    mkv::CClusterBytes cluster;
    cluster.append(View("a"), {View("bcd")}, View("e"));
    cluster.append(View("fg"), {View("h")}, {});
    EXPECT_EQ(cluster.partsBehind(View("<head>")).size(), 1u);
    EXPECT_EQ(Joined(cluster, "<head>"), "<head>abcdefgh");
    EXPECT_EQ(Joined(cluster, "<>"), "<>abcdefgh");
    EXPECT_EQ(cluster.payloadBytes(), 4u);
    EXPECT_EQ(cluster.totalBytes(), 8u);
}

TEST(ClusterBytesTest, AnEmptyOneHasItsHeadAlone) {
    mkv::CClusterBytes cluster;
    EXPECT_EQ(cluster.totalBytes(), 0u);
    EXPECT_EQ(Joined(cluster, "<head>"), "<head>");
    EXPECT_EQ(cluster.totalBytes(), 0u);
    cluster.append(View("a"), {View("b")}, {});
    EXPECT_EQ(Joined(cluster, "<>"), "<>ab");
}

TEST(ClusterBytesTest, TakesOverLargePayloadsWithoutAnotherCopy) {
    const std::string large(kLarge, 'x');
    auto owner = Owned(large);
    const BYTE* const bytes = owner.get();
    mkv::CClusterBytes cluster;
    cluster.append(View("a"), {View("b")}, View("c"));
    cluster.append(View("d"), {{bytes, kLarge}, &owner}, View("e"));
    cluster.append(View("f"), {View("g")}, View("h"));
    EXPECT_EQ(owner, nullptr);
    const auto& parts = cluster.partsBehind(View("<>"));
    ASSERT_EQ(parts.size(), 3u);
    EXPECT_EQ(parts[1].data(), bytes);
    EXPECT_EQ(parts[1].size(), kLarge);
    EXPECT_EQ(Joined(cluster, "<>"), "<>abcd" + large + "efgh");
    EXPECT_EQ(cluster.payloadBytes(), kLarge + 2);
    EXPECT_EQ(cluster.totalBytes(), kLarge + 8);
}

TEST(ClusterBytesTest, TakesOverAnyNumberInARow) {
    mkv::CClusterBytes cluster;
    std::string expected = "<>";
    for (int i = 0; i < 20; ++i) {
        const std::string large(kLarge + static_cast<size_t>(i), static_cast<char>('a' + i));
        auto owner = Owned(large);
        cluster.append(View("-"), {{owner.get(), large.size()}, &owner}, {});
        expected += "-" + large;
    }
    EXPECT_EQ(cluster.partsBehind(View("<>")).size(), 40u);
    EXPECT_EQ(Joined(cluster, "<>"), expected);
}

TEST(ClusterBytesTest, SmallPayloadsStayTheirOwners) {
    const std::string small(kLarge - 1, 'x');
    auto owner = Owned(small);
    mkv::CClusterBytes cluster;
    cluster.append({}, {{owner.get(), small.size()}, &owner}, {});
    ASSERT_NE(owner, nullptr);
    owner[0] = 'y';
    EXPECT_EQ(cluster.partsBehind({}).size(), 1u);
    EXPECT_EQ(Joined(cluster), small);
}

TEST(ClusterBytesTest, LargePayloadsWithoutAnOwnerAreCopied) {
    std::vector<BYTE> frame(kLarge, 'x');
    mkv::CClusterBytes cluster;
    cluster.append({}, {frame}, {});
    frame.assign(kLarge, 'y');
    EXPECT_EQ(Joined(cluster), std::string(kLarge, 'x'));
}

TEST(ClusterBytesTest, ResetForgetsEverythingAndGivesBackWhatWasTakenOver) {
    CountingHome home;
    mkv::CClusterBytes cluster;
    for (int i = 0; i < 2; ++i) {
        auto owner = home.Give(kLarge);
        cluster.append(View("a"), {{owner.get(), kLarge}, &owner}, {});
    }
    cluster.append({}, {std::vector<BYTE>(100)}, {});
    EXPECT_EQ(home.returned, 0);
    cluster.reset();
    EXPECT_EQ(home.returned, 2);
    EXPECT_EQ(cluster.payloadBytes(), 0u);
    EXPECT_EQ(cluster.totalBytes(), 0u);
    cluster.append(View("a"), {View("b")}, {});
    EXPECT_EQ(Joined(cluster, "<>"), "<>ab");
}

TEST(ClusterBytesTest, TheBufferIsUsedAgain) {
    mkv::CClusterBytes cluster;
    const std::string frame(1000, 'x');
    cluster.append({}, {View(frame)}, {});
    const BYTE* const first = cluster.partsBehind({})[0].data();
    cluster.reset();
    cluster.append({}, {View(frame)}, {});
    EXPECT_EQ(cluster.partsBehind({})[0].data(), first);
}

} // namespace
