// The Attachments element.
#include <cstdlib>
#include <memory>

#include "mkv/matroska_file.h"
#include "tests/mkv/writer_fixture.h"

namespace {

using namespace test_support::ebml_id;
using test_support::DataOf;
using test_support::EbmlElement;
using test_support::TextOf;
using test_support::UnsignedOf;

class AttachmentsTest : public WriterTest {
  protected:
    MuxAttachment Full() {
        return {m_fileName.Get(), m_description.Get(), m_mimeType, static_cast<UINT32>(m_data.size()),
                m_data.data(),    0x1122334455667788};
    }

    // The attached files of a file with one audio track.
    std::vector<const EbmlElement*> Attached() {
        RegisterAudio();
        Open();
        Write(0, 0, 10 * kMs);
        const EbmlElement* const attachments = Element({kAttachments});
        return attachments == nullptr ? std::vector<const EbmlElement*>() : attachments->Children(kAttachedFile);
    }

    std::vector<std::string> ChildNames(const EbmlElement& element) {
        std::vector<std::string> names;
        for (const EbmlElement& child : element.children) {
            names.push_back(child.Name());
        }
        return names;
    }

    win::Bstr m_fileName{WideStringView(OLESTR("font.ttf"))};
    win::Bstr m_description{WideStringView(OLESTR("the font"))};
    char m_mimeType[16] = "font/ttf";
    Bytes m_data{0, 1, 2, 0xff, 4};
};

TEST_F(AttachmentsTest, EveryFieldIsWritten) {
    m_writer.addAttachment(Full());
    const auto attached = Attached();
    ASSERT_EQ(attached.size(), 1u);
    const auto file = File().file;
    EXPECT_EQ(TextOf(file, *attached[0]->Child(kFileDescription)), "the font");
    EXPECT_EQ(TextOf(file, *attached[0]->Child(kFileName)), "font.ttf");
    EXPECT_EQ(TextOf(file, *attached[0]->Child(kFileMimeType)), "font/ttf");
    const auto data = DataOf(file, *attached[0]->Child(kFileData));
    EXPECT_EQ(Bytes(data.begin(), data.end()), m_data);
    EXPECT_EQ(UnsignedOf(file, *attached[0]->Child(kFileUid)), 0x1122334455667788u);
}

TEST_F(AttachmentsTest, NullFieldsAndUidZeroAreLeftOut) {
    KeepFromJudges(); // the format requires the fields that the application did not give
    m_writer.addAttachment(MuxAttachment{});
    MuxAttachment nameOnly{};
    nameOnly.fileName = m_fileName.Get();
    m_writer.addAttachment(nameOnly);
    const auto attached = Attached();
    ASSERT_EQ(attached.size(), 1u); // nothing is left of the other one
    EXPECT_EQ(ChildNames(*attached[0]), (std::vector<std::string>{"FileName"}));
}

TEST_F(AttachmentsTest, EmptyFieldsThatTheRecordHasAreWritten) {
    KeepFromJudges(); // readers drop an attachment without data or name
    const win::Bstr nothing{WideStringView()};
    char noMimeType[] = "";
    m_writer.addAttachment({nothing.Get(), nothing.Get(), noMimeType, 0, m_data.data(), 7});
    const auto attached = Attached();
    ASSERT_EQ(attached.size(), 1u);
    for (const uint32_t id : {kFileDescription, kFileName, kFileMimeType, kFileData}) {
        const EbmlElement* const child = attached[0]->Child(id);
        ASSERT_NE(child, nullptr) << id;
        EXPECT_EQ(child->dataSize, 0u) << child->Name();
    }
    EXPECT_EQ(UnsignedOf(File().file, *attached[0]->Child(kFileUid)), 7u);
}

TEST_F(AttachmentsTest, ALengthWithoutDataWritesNoDataWhateverItIs) {
    KeepFromJudges(); // the format requires data
    auto record = Full();
    record.data = nullptr;
    for (const UINT32 size : {5u, 0x7fffffffu, 0xffffffffu}) {
        record.dataSize = size;
        EXPECT_TRUE(m_writer.addAttachment(record)) << size;
    }
    const auto attached = Attached();
    ASSERT_EQ(attached.size(), 3u);
    for (const EbmlElement* const element : attached) {
        EXPECT_EQ(element->Child(kFileData), nullptr);
        EXPECT_EQ(element->children.size(), 4u);
    }
}

TEST_F(AttachmentsTest, EachFieldMayBeMissingAlone) {
    KeepFromJudges(); // the format requires some of them
    const auto full = Full();
    auto record = full;
    record.fileName = nullptr;
    m_writer.addAttachment(record);
    record = full;
    record.description = nullptr;
    m_writer.addAttachment(record);
    record = full;
    record.mimeType = nullptr;
    m_writer.addAttachment(record);
    record = full;
    record.data = nullptr;
    m_writer.addAttachment(record);
    record = full;
    record.uid = 0;
    m_writer.addAttachment(record);
    const auto attached = Attached();
    ASSERT_EQ(attached.size(), 5u);
    EXPECT_EQ(attached[0]->Child(kFileName), nullptr);
    EXPECT_EQ(attached[1]->Child(kFileDescription), nullptr);
    EXPECT_EQ(attached[2]->Child(kFileMimeType), nullptr);
    EXPECT_EQ(attached[3]->Child(kFileData), nullptr);
    EXPECT_EQ(attached[4]->Child(kFileUid), nullptr);
    for (const EbmlElement* const element : attached) {
        EXPECT_EQ(element->children.size(), 4u);
    }
}

TEST_F(AttachmentsTest, LoneSurrogatesInTextsLoseNothingBehindThem) {
    const WCHAR text[] = {'x', 0xdc00, 'y', 0};
    const win::Bstr bad{WideStringView(text)};
    auto record = Full();
    record.fileName = bad.Get();
    record.description = bad.Get();
    m_writer.addAttachment(record);
    const auto attached = Attached();
    ASSERT_EQ(attached.size(), 1u);
    EXPECT_EQ(TextOf(File().file, *attached[0]->Child(kFileName)), "x\xef\xbf\xbdy");
    EXPECT_EQ(TextOf(File().file, *attached[0]->Child(kFileDescription)), "x\xef\xbf\xbdy");
}

TEST_F(AttachmentsTest, OrderIsKeptAndAttachmentsSurviveClose) {
    auto record = Full();
    m_writer.addAttachment(record);
    const win::Bstr second{WideStringView(OLESTR("second"))};
    record.fileName = second.Get();
    record.uid = 2;
    m_writer.addAttachment(record);
    for (int file = 0; file < 2; ++file) {
        const auto attached = Attached();
        ASSERT_EQ(attached.size(), 2u);
        EXPECT_EQ(TextOf(File().file, *attached[0]->Child(kFileName)), "font.ttf");
        EXPECT_EQ(TextOf(File().file, *attached[1]->Child(kFileName)), "second");
    }
    EXPECT_EQ(m_writer.attachmentCount(), 2u);
    ASSERT_NE(m_writer.attachment(1), nullptr);
    EXPECT_EQ(m_writer.attachment(1)->uid, 2u);
    EXPECT_EQ(m_writer.attachment(2), nullptr);
}

TEST_F(AttachmentsTest, TwoGibibytesOrMoreAreRefused) {
    auto record = Full();
    record.dataSize = 0x80000000;
    EXPECT_FALSE(m_writer.addAttachment(record));
    EXPECT_EQ(m_writer.attachmentCount(), 0u);
    EXPECT_TRUE(Attached().empty());
}

} // namespace
