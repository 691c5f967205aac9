// The Attachments element of the strict profile.
#include <set>

#include "tests/mkv/writer_fixture.h"

namespace {

using namespace test_support::ebml_id;
using test_support::EbmlElement;
using test_support::TextOf;
using test_support::UnsignedOf;

class StrictAttachmentsTest : public WriterTest {
  protected:
    MuxAttachment Full() {
        return {m_fileName.Get(), m_description.Get(), m_mimeType, static_cast<UINT32>(m_data.size()),
                m_data.data(),    0x1122334455667788};
    }

    void WriteFile(UINT64 seed = 1) {
        records::FileOptions options;
        options.profile = MuxProfile_Strict;
        options.seed = seed;
        RegisterAudio();
        Open(options);
        Write(0, 0, 10 * kMs);
    }

    // The attached files of a file with one audio track.
    std::vector<const EbmlElement*> Attached() {
        WriteFile();
        const EbmlElement* const attachments = Element({kAttachments});
        return attachments == nullptr ? std::vector<const EbmlElement*>() : attachments->Children(kAttachedFile);
    }

    std::string TextOfChild(const EbmlElement& attached, uint32_t id) {
        const EbmlElement* const child = attached.Child(id);
        return child == nullptr ? "none" : TextOf(File().file, *child);
    }
    uint64_t UidOf(const EbmlElement& attached) {
        return UnsignedOf(File().file, *attached.Child(kFileUid)).value_or(0);
    }

    win::Bstr m_fileName{WideStringView(OLESTR("font.ttf"))};
    win::Bstr m_description{WideStringView(OLESTR("the font"))};
    char m_mimeType[16] = "font/ttf";
    Bytes m_data{0, 1, 2, 0xff, 4};
};

TEST_F(StrictAttachmentsTest, WhatIsGivenIsWrittenAsItIs) {
    m_writer.addAttachment(Full());
    const auto attached = Attached();
    ASSERT_EQ(attached.size(), 1u);
    EXPECT_EQ(TextOfChild(*attached[0], kFileName), "font.ttf");
    EXPECT_EQ(TextOfChild(*attached[0], kFileDescription), "the font");
    EXPECT_EQ(TextOfChild(*attached[0], kFileMimeType), "font/ttf");
    EXPECT_EQ(UidOf(*attached[0]), 0x1122334455667788u);
    const auto data = test_support::DataOf(File().file, *attached[0]->Child(kFileData));
    EXPECT_EQ(Bytes(data.begin(), data.end()), m_data);
}

TEST_F(StrictAttachmentsTest, WhatTheFormatRequiresIsFoundForOneWithoutIt) {
    const win::Bstr nothing{WideStringView()};
    char noMimeType[] = "";
    m_writer.addAttachment({nullptr, nullptr, nullptr, 5, m_data.data(), 0});
    m_writer.addAttachment({nothing.Get(), nothing.Get(), noMimeType, 5, m_data.data(), 0});
    const auto attached = Attached();
    ASSERT_EQ(attached.size(), 2u);
    EXPECT_EQ(TextOfChild(*attached[0], kFileName), "attachment-1");
    EXPECT_EQ(TextOfChild(*attached[1], kFileName), "attachment-2");
    for (const EbmlElement* const element : attached) {
        EXPECT_EQ(TextOfChild(*element, kFileMimeType), "application/octet-stream");
        EXPECT_EQ(element->Child(kFileDescription), nullptr);
        EXPECT_GT(UidOf(*element), 0xffffffffu);
    }
    EXPECT_NE(UidOf(*attached[0]), UidOf(*attached[1]));
}

TEST_F(StrictAttachmentsTest, AMediaTypeThatIsNoneIsUnknown) {
    char types[][16] = {"font", "/ttf", "font/", "f\xf6nt/ttf", "font/t\tf", "text/x; a=b"};
    for (char* const type : {types[0], types[1], types[2], types[3], types[4], types[5]}) {
        MuxAttachment record = Full();
        record.mimeType = type;
        m_writer.addAttachment(record);
    }
    const auto attached = Attached();
    ASSERT_EQ(attached.size(), 6u);
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(TextOfChild(*attached[i], kFileMimeType), "application/octet-stream") << i;
    }
    EXPECT_EQ(TextOfChild(*attached[5], kFileMimeType), "text/x; a=b");
}

TEST_F(StrictAttachmentsTest, OneWithoutDataIsLeftOut) {
    MuxAttachment record = Full();
    record.dataSize = 0;
    m_writer.addAttachment(record);
    record = Full();
    record.data = nullptr;
    m_writer.addAttachment(record);
    EXPECT_TRUE(Attached().empty());
    EXPECT_EQ(Element({kAttachments}), nullptr);

    record = Full();
    record.fileName = nullptr;
    m_writer.addAttachment(record);
    const auto attached = Attached();
    ASSERT_EQ(attached.size(), 1u);
    EXPECT_EQ(TextOfChild(*attached[0], kFileName), "attachment-3"); // as the application counts
}

TEST_F(StrictAttachmentsTest, TheSecondOfTwoAlikeIdentifiersIsReplaced) {
    m_writer.addAttachment(Full());
    m_writer.addAttachment(Full());
    m_writer.addAttachment(Full());
    const auto attached = Attached();
    ASSERT_EQ(attached.size(), 3u);
    EXPECT_EQ(UidOf(*attached[0]), 0x1122334455667788u);
    const std::set<uint64_t> uids{0, UidOf(*attached[0]), UidOf(*attached[1]), UidOf(*attached[2])};
    EXPECT_EQ(uids.size(), 4u);
}

TEST_F(StrictAttachmentsTest, WhatTheWriterKeepsStaysAsItWasGiven) {
    m_writer.addAttachment({nullptr, nullptr, nullptr, 5, m_data.data(), 0});
    for (int file = 0; file < 2; ++file) {
        ASSERT_EQ(Attached().size(), 1u);
        EXPECT_EQ(m_writer.attachment(0)->fileName, nullptr);
        EXPECT_EQ(m_writer.attachment(0)->mimeType, nullptr);
        EXPECT_EQ(m_writer.attachment(0)->uid, 0u);
    }
}

} // namespace
