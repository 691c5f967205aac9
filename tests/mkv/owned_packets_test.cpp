// Packets whose bytes the writer may take over: what it makes of them is what it makes of copies, and they go back.
#include <map>
#include <random>

#include "mkv/cluster_rule.h"
#include "mkv/matroska_file.h"
#include "tests/mkv/writer_fixture.h"

namespace {

using Bytes = std::vector<BYTE>;

constexpr INT64 kMs = 10000;
constexpr size_t kLarge = mkv::CClusterBytes::kMinTakenOverBytes;

// Where bytes come from and go back to.
class BytePool final : public win::ByteHome {
  public:
    ~BytePool() { EXPECT_EQ(m_away, 0) << "bytes never came back"; }
    win::OwnedBytes Give(const Bytes& content) {
        ++m_away;
        auto* const bytes = new BYTE[content.size() + 1];
        std::copy(content.begin(), content.end(), bytes);
        return {bytes, win::ByteReturn(*this)};
    }
    void TakeBack(BYTE* bytes) noexcept override {
        --m_away;
        delete[] bytes;
    }
    [[nodiscard]] int Away() const { return m_away; }

  private:
    int m_away = 0;
};

// Remembers where the bytes of each write lay.
class PointerOutput final : public mkv::CFileOutput {
  public:
    uint32 read(void*, size_t) override { return 0; }
    void setFilePointer(int64 offset, libebml::seek_mode) override { m_position = static_cast<uint64>(offset); }
    size_t write(const void* bytes, size_t size) override {
        writes[bytes] = size;
        m_position += size;
        return size;
    }
    uint64 getFilePointer() override { return m_position; }
    void close() override {}

    std::map<const void*, size_t> writes;

  private:
    uint64 m_position = 0;
};

mkv::TrackList Tracks() {
    const Bytes sequenceHeader{0, 0, 0, 1, 0x67, 0x42, 0, 0x1e, 0, 0, 0, 1, 0x68, 0xce};
    const records::CTrackSettingsRow row(0);
    mkv::TrackList tracks;
    tracks.push_back(
        {CMediaType(test_support::Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, sequenceHeader, 66, 30).Get()), row});
    tracks.push_back({CMediaType(test_support::WaveType(mediasubtype::kPcm).Get()), row});
    tracks.push_back({CMediaType(test_support::SubtitleType(mediasubtype::kUtf8).Get()), row});
    return tracks;
}

// A file with the three tracks, as far as its first cluster.
struct OpenFile {
    explicit OpenFile(mkv::CFileOutput& output) : file(output) {
        file.writeHead(mkv::DocType::matroska);
        file.writeTracks(tracks);
        file.startFirstCluster();
    }
    // Whether the bytes were taken over.
    bool Add(UINT32 stream, INT64 ms, const Bytes& payload, BytePool& pool) {
        auto owner = pool.Give(payload);
        mkv::Packet packet = PacketOf(stream, ms, owner.get(), payload.size());
        packet.owned = &owner;
        (void)file.clusters().addFrameToCurrentCluster(packet);
        return owner == nullptr;
    }
    void AddCopied(UINT32 stream, INT64 ms, const Bytes& payload) {
        (void)file.clusters().addFrameToCurrentCluster(PacketOf(stream, ms, payload.data(), payload.size()));
    }
    static mkv::Packet PacketOf(UINT32 stream, INT64 ms, const BYTE* bytes, size_t size) {
        return {ms * kMs, (ms + 40) * kMs, bytes, static_cast<UINT32>(size), ms % 400 == 0, stream, stream == 2};
    }

    mkv::TrackList tracks = Tracks();
    mkv::CMatroskaFile file;
};

Bytes RandomPayload(std::mt19937& random) {
    Bytes payload(random() % 3 == 0 ? kLarge - 8 + random() % 40000 : random() % 500);
    std::generate(payload.begin(), payload.end(), [&] { return static_cast<BYTE>(random()); });
    for (size_t i = random() % 600; i + 4 < payload.size(); i += 1 + random() % 3000) {
        std::fill_n(payload.begin() + static_cast<ptrdiff_t>(i), 3, BYTE{0});
        payload[i + 3] = 1;
    }
    if (random() % 3 != 0 && payload.size() > 4) { // as nearly all samples begin
        std::fill_n(payload.begin(), 3, BYTE{0});
        payload[3] = 1;
    }
    return payload;
}

// The clusters alone: the tracks have random identifiers.
Bytes ClustersOf(const test_support::MemoryStream& stream, size_t headBytes) {
    Bytes bytes = stream.Bytes();
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(headBytes));
    return bytes;
}

Bytes RandomClusters(unsigned seed, BytePool* pool) {
    std::mt19937 random(seed);
    test_support::MemoryStream stream;
    CMkvIO io;
    io.setStream(&stream);
    OpenFile open(io);
    const size_t headBytes = stream.Bytes().size();
    for (INT64 ms = 0; ms < 2000; ms += 40) {
        const Bytes payload = RandomPayload(random);
        const auto track = static_cast<UINT32>(random() % 3);
        if (pool != nullptr) {
            open.Add(track, ms, payload, *pool);
        } else {
            open.AddCopied(track, ms, payload);
        }
    }
    open.file.clusters().flushCluster();
    return ClustersOf(stream, headBytes);
}

TEST(OwnedPacketsTest, MakeTheSameClustersAsCopies) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        BytePool pool;
        const Bytes copied = RandomClusters(seed, nullptr);
        EXPECT_GT(copied.size(), 10 * kLarge);
        EXPECT_TRUE(RandomClusters(seed, &pool) == copied) << "seed " << seed;
    }
}

TEST(OwnedPacketsTest, LargeOnesAreWrittenFromWhereTheyLieAndSmallOnesStay) {
    PointerOutput output;
    BytePool pool;
    OpenFile open(output);
    const Bytes large(kLarge, 7);
    auto owner = pool.Give(large);
    const BYTE* const place = owner.get();
    mkv::Packet packet = OpenFile::PacketOf(1, 0, place, large.size());
    packet.owned = &owner;
    (void)open.file.clusters().addFrameToCurrentCluster(packet);
    EXPECT_EQ(owner, nullptr);
    EXPECT_FALSE(open.Add(1, 10, Bytes(kLarge - 1), pool));
    output.writes.clear();
    open.file.clusters().flushCluster();
    EXPECT_EQ(output.writes.size(), 3u);
    ASSERT_TRUE(output.writes.contains(place));
    EXPECT_EQ(output.writes[place], kLarge);
}

TEST(OwnedPacketsTest, StartCodesAreReplacedWhereTheyStand) {
    PointerOutput output;
    BytePool pool;
    OpenFile open(output);
    Bytes sample(kLarge, 7);
    std::copy_n(Bytes{0, 0, 0, 1}.begin(), 4, sample.begin());
    auto owner = pool.Give(sample);
    BYTE* const place = owner.get();
    mkv::Packet packet = OpenFile::PacketOf(0, 0, place, sample.size());
    packet.owned = &owner;
    (void)open.file.clusters().addFrameToCurrentCluster(packet);
    constexpr size_t kUnitBytes = kLarge - 4;
    EXPECT_EQ(Bytes(place, place + 5), (Bytes{0, 0, kUnitBytes >> 8, kUnitBytes & 0xff, 7}));
    open.file.clusters().flushCluster();
    EXPECT_TRUE(output.writes.contains(place));
}

TEST(OwnedPacketsTest, GoBackWhenTheirClusterIsWrittenLostOrForgotten) {
    test_support::MemoryStream stream;
    CMkvIO io;
    io.setStream(&stream);
    BytePool pool;
    {
        OpenFile open(io);
        EXPECT_TRUE(open.Add(1, 0, Bytes(kLarge), pool));
        EXPECT_TRUE(open.Add(1, 10, Bytes(kLarge), pool));
        EXPECT_EQ(pool.Away(), 2);
        open.file.clusters().flushCluster();
        EXPECT_EQ(pool.Away(), 0);
        EXPECT_TRUE(open.Add(1, 20, Bytes(kLarge), pool));
        stream.FailNth(test_support::StreamOperation::Write, 2, E_FAIL);
        open.file.clusters().flushCluster();
        EXPECT_EQ(pool.Away(), 0);
        EXPECT_TRUE(open.Add(1, 30, Bytes(kLarge), pool));
    }
    EXPECT_EQ(pool.Away(), 0);
}

// As for the writer before it could take bytes over: four mebibytes and the packet that did not fit any more.
TEST(OwnedPacketsTest, AClusterHoldsNoMoreThanItsLimitAndOnePacket) {
    test_support::MemoryStream stream;
    CMkvIO io;
    io.setStream(&stream);
    BytePool pool;
    OpenFile open(io);
    constexpr int kPackets = 200;
    constexpr size_t kBytes = size_t{100} << 10;
    int most = 0;
    for (int i = 0; i < kPackets; ++i) {
        open.Add(1, i, Bytes(kBytes), pool);
        most = std::max(most, pool.Away());
    }
    EXPECT_EQ(most, static_cast<int>(mkv::kMaxClusterPayloadBytes / kBytes));
}

} // namespace
