#include "records/attachment_list.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

class AttachmentListTest : public testing::Test {
  protected:
    MuxAttachment Record() {
        return {
            m_fileName.Get(), m_description.Get(), m_mimeType, static_cast<UINT32>(m_data.size()), m_data.data(), 99};
    }

    win::Bstr m_fileName{WideStringView(OLESTR("cover.png"))};
    win::Bstr m_description{WideStringView(OLESTR("the cover"))};
    char m_mimeType[10] = "image/png";
    std::vector<BYTE> m_data{1, 2, 3};
    records::CAttachmentList m_list;
};

TEST_F(AttachmentListTest, KeepsDeepCopies) {
    ASSERT_TRUE(m_list.Add(Record()));
    m_mimeType[0] = 'X';
    m_data.assign(3, 9);
    ASSERT_EQ(m_list.Count(), 1u);
    const MuxAttachment* const kept = m_list.At(0);
    ASSERT_NE(kept, nullptr);
    EXPECT_NE(kept->fileName, m_fileName.Get());
    EXPECT_TRUE(WideStringView(kept->fileName) == OLESTR("cover.png"));
    EXPECT_TRUE(WideStringView(kept->description) == OLESTR("the cover"));
    EXPECT_STREQ(kept->mimeType, "image/png");
    EXPECT_EQ(std::vector<BYTE>(kept->data, kept->data + kept->dataSize), (std::vector<BYTE>{1, 2, 3}));
    EXPECT_EQ(kept->uid, 99u);
}

TEST_F(AttachmentListTest, IndexBeyondTheEndGivesNull) {
    EXPECT_EQ(m_list.At(0), nullptr);
    m_list.Add(Record());
    EXPECT_NE(m_list.At(0), nullptr);
    EXPECT_EQ(m_list.At(1), nullptr);
    EXPECT_EQ(m_list.At(static_cast<size_t>(-1)), nullptr);
}

TEST_F(AttachmentListTest, EveryFieldMayBeAbsent) {
    ASSERT_TRUE(m_list.Add(MuxAttachment{}));
    const MuxAttachment& kept = *m_list.At(0);
    EXPECT_EQ(kept.fileName, nullptr);
    EXPECT_EQ(kept.description, nullptr);
    EXPECT_EQ(kept.mimeType, nullptr);
    EXPECT_EQ(kept.data, nullptr);
    EXPECT_EQ(kept.dataSize, 0u);
    EXPECT_EQ(kept.uid, 0u);
}

TEST_F(AttachmentListTest, ALengthWithoutDataCountsAsNoDataWhateverItIs) {
    MuxAttachment record{};
    for (const UINT32 size : {1u, 1000u, 0x7ffffffeu, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        record.dataSize = size;
        ASSERT_TRUE(m_list.Add(record)) << size;
        const MuxAttachment& kept = *m_list.At(m_list.Count() - 1);
        EXPECT_EQ(kept.data, nullptr);
        EXPECT_EQ(kept.dataSize, 0u);
    }
}

TEST_F(AttachmentListTest, EmptyFieldsAreThereAndNullOnesAreNot) {
    const win::Bstr nothing{WideStringView()};
    char noMimeType[] = "";
    BYTE notRead = 7;
    ASSERT_TRUE(m_list.Add({nothing.Get(), nothing.Get(), noMimeType, 0, &notRead, 0}));
    const MuxAttachment& kept = *m_list.At(0);
    ASSERT_NE(kept.fileName, nullptr);
    EXPECT_EQ(SysStringLen(kept.fileName), 0u);
    ASSERT_NE(kept.description, nullptr);
    EXPECT_EQ(SysStringLen(kept.description), 0u);
    ASSERT_NE(kept.mimeType, nullptr);
    EXPECT_STREQ(kept.mimeType, "");
    EXPECT_NE(kept.data, nullptr);
    EXPECT_NE(kept.data, &notRead);
    EXPECT_EQ(kept.dataSize, 0u);
}

TEST_F(AttachmentListTest, TwoGibibytesOrMoreAreRefusedUnread) {
    MuxAttachment record = Record();
    for (const UINT32 size : {0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        record.dataSize = size;
        EXPECT_FALSE(m_list.Add(record)) << size;
    }
    EXPECT_EQ(m_list.Count(), 0u);
}

TEST_F(AttachmentListTest, RecordsStayWhereTheyAre) {
    m_list.Add(Record());
    const MuxAttachment* const first = m_list.At(0);
    for (int i = 0; i < 100; ++i) {
        m_list.Add(Record());
    }
    EXPECT_EQ(m_list.At(0), first);
    EXPECT_EQ(m_list.All().size(), 101u);
    EXPECT_EQ(m_list.All().front(), first);
}

} // namespace
