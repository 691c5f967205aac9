// Segments around the greatest size that their size field holds, on a stream that keeps only what small writes say.
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <memory>

#include "mkv/attachments_element.h"
#include "mkv/matroska_file.h"

namespace {

// Positions as a file has them, and the bytes of short writes.
class SparseOutput : public mkv::CFileOutput {
  public:
    uint32 read(void*, size_t) override { return 0; }
    void setFilePointer(int64 offset, libebml::seek_mode mode) override {
        m_position = static_cast<uint64>(offset) + (mode == libebml::seek_beginning ? 0 : m_position);
    }
    size_t write(const void* buffer, size_t size) override {
        if (size <= kKeptBytes) {
            const auto* const bytes = static_cast<const BYTE*>(buffer);
            m_kept[m_position] = std::vector<BYTE>(bytes, bytes + size);
        }
        m_position += size;
        m_end = std::max(m_end, m_position);
        return size;
    }
    uint64 getFilePointer() override { return m_position; }
    void close() override {}

    [[nodiscard]] uint64 end() const { return m_end; }
    [[nodiscard]] std::vector<BYTE> lastWriteAt(uint64 position) const {
        const auto found = m_kept.find(position);
        return found == m_kept.end() ? std::vector<BYTE>() : found->second;
    }

  private:
    static constexpr size_t kKeptBytes = 4096;

    uint64 m_position = 0;
    uint64 m_end = 0;
    std::map<uint64, std::vector<BYTE>> m_kept;
};

constexpr UINT64 kSegmentOffset = 40;
constexpr UINT64 kSegmentHeadBytes = 9;
constexpr UINT64 kStrictSegmentHeadBytes = 12;
constexpr UINT32 kGreatestAttachmentBytes = 0x7ffffffe;

class LargeSegmentTest : public testing::Test {
  protected:
    // Zeroed pages that are only read take no memory. Attachments are written from where they lie.
    LargeSegmentTest() : m_data(static_cast<BYTE*>(std::calloc(1, kGreatestAttachmentBytes)), &std::free) {}

    // The Segment head of a finished file with so many bytes of attached data.
    std::vector<BYTE> SegmentHeadWith(UINT64 attachedBytes, MuxProfile profile = MuxProfile_Compatible) {
        m_output = SparseOutput();
        std::vector<std::unique_ptr<MuxAttachment>> records;
        std::vector<const MuxAttachment*> pointers;
        while (attachedBytes > 0) {
            const auto size = static_cast<UINT32>(std::min<UINT64>(attachedBytes, kGreatestAttachmentBytes));
            records.push_back(
                std::make_unique<MuxAttachment>(MuxAttachment{nullptr, nullptr, nullptr, size, m_data.get(), 1}));
            pointers.push_back(records.back().get());
            attachedBytes -= size;
        }
        const mkv::TrackList noTracks;
        records::FileOptions options;
        options.profile = profile;
        mkv::CMatroskaFile file(m_output, options);
        file.writeHead(mkv::DocType::matroska);
        file.writeTracks(noTracks);
        mkv::CAttachmentsElement attachments(pointers);
        file.writeElement(attachments);
        file.startFirstCluster();
        file.finalise(0.0);
        auto head = m_output.lastWriteAt(kSegmentOffset);
        return head.empty() ? UnpatchedHead() : head;
    }

    // As written when the file was opened, together with what stands before and behind it.
    std::vector<BYTE> UnpatchedHead() {
        auto opened = m_output.lastWriteAt(0);
        return {opened.begin() + kSegmentOffset, opened.begin() + kSegmentOffset + kSegmentHeadBytes};
    }

    [[nodiscard]] UINT64 SegmentDataBytes() const { return m_output.end() - kSegmentOffset - kSegmentHeadBytes; }

    std::unique_ptr<BYTE, decltype(&std::free)> m_data;
    SparseOutput m_output;
};

constexpr std::array<BYTE, 9> kUnknownSizeHead{0x18, 0x53, 0x80, 0x67, 0x0f, 0xff, 0xff, 0xff, 0xff};
constexpr std::array<BYTE, 9> kGreatestSizeHead{0x18, 0x53, 0x80, 0x67, 0x0f, 0xff, 0xff, 0xff, 0xfe};

TEST(SegmentSizeTest, SizesAboveTheFiveByteFieldAreRefused) {
    EXPECT_EQ(mkv::kCompatibleForm.maxSegmentDataBytes(), 34359738366u);
    EXPECT_TRUE(mkv::kCompatibleForm.fitsSegmentSizeField(0));
    EXPECT_TRUE(mkv::kCompatibleForm.fitsSegmentSizeField(34359738366u));
    EXPECT_FALSE(mkv::kCompatibleForm.fitsSegmentSizeField(34359738367u)); // all ones: unknown
    EXPECT_FALSE(mkv::kCompatibleForm.fitsSegmentSizeField(34359738368u));
}

TEST(SegmentSizeTest, AStrictFileHasASizeHoweverLargeItIs) {
    EXPECT_TRUE(mkv::kStrictForm.fitsSegmentSizeField(34359738367u));
    EXPECT_TRUE(mkv::kStrictForm.fitsSegmentSizeField((UINT64{1} << 56) - 2));
    EXPECT_FALSE(mkv::kStrictForm.fitsSegmentSizeField((UINT64{1} << 56) - 1));
}

TEST_F(LargeSegmentTest, TheSizeFieldIsFilledUpToItsGreatestValueAndLeftUnknownAboveIt) {
    ASSERT_NE(m_data, nullptr);
    const UINT64 nearTheLimit = mkv::kCompatibleForm.maxSegmentDataBytes() - 100000;
    SegmentHeadWith(nearTheLimit);
    const UINT64 attachedAtTheLimit = nearTheLimit + mkv::kCompatibleForm.maxSegmentDataBytes() - SegmentDataBytes();

    const auto atTheLimit = SegmentHeadWith(attachedAtTheLimit);
    EXPECT_EQ(SegmentDataBytes(), 34359738366u);
    EXPECT_TRUE(std::equal(atTheLimit.begin(), atTheLimit.end(), kGreatestSizeHead.begin(), kGreatestSizeHead.end()));

    const auto above = SegmentHeadWith(attachedAtTheLimit + 1);
    EXPECT_EQ(SegmentDataBytes(), 34359738367u);
    EXPECT_TRUE(std::equal(above.begin(), above.end(), kUnknownSizeHead.begin(), kUnknownSizeHead.end()));

    const auto farAbove = SegmentHeadWith(attachedAtTheLimit + 3000000000);
    EXPECT_TRUE(std::equal(farAbove.begin(), farAbove.end(), kUnknownSizeHead.begin(), kUnknownSizeHead.end()));
}

TEST_F(LargeSegmentTest, AStrictFileFarAboveThatHasItsSize) {
    ASSERT_NE(m_data, nullptr);
    const auto head = SegmentHeadWith(mkv::kCompatibleForm.maxSegmentDataBytes() + 3000000000, MuxProfile_Strict);
    const UINT64 dataBytes = m_output.end() - kSegmentOffset - kStrictSegmentHeadBytes;
    ASSERT_GT(dataBytes, mkv::kCompatibleForm.maxSegmentDataBytes());
    std::vector<BYTE> expected{0x18, 0x53, 0x80, 0x67, 0x01};
    for (int shift = 48; shift >= 0; shift -= 8) {
        expected.push_back(static_cast<BYTE>(dataBytes >> shift));
    }
    EXPECT_EQ(head, expected);
}

} // namespace
