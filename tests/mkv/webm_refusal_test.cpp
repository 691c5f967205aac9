// What cannot go into a WebM file of the strict profile.
#include "mkv/webm_refusal.h"

#include "mkv/writer_errors.h"
#include "tests/mkv/writer_fixture.h"

namespace {

class WebmRefusalTest : public WriterTest {
  protected:
    void SetUp() override { m_writer.setOutputFormat(CMkvWriter::kWebMFormat); }

    static test_support::MediaTypeValue Vp8Type() {
        return test_support::VideoInfoType(SubtypeFromFourCC('V', 'P', '8', '0'));
    }
    void RegisterAt(INT32 input, const test_support::MediaTypeValue& type) {
        m_writer.registerTrack(type.Get(), Row().Get(), records::UnsetTrackFlags(input));
    }
    void OpenAs(MuxProfile profile) {
        records::FileOptions options;
        options.profile = profile;
        m_io.setStream(&m_stream);
        m_writer.Open(&m_io, options);
    }
    // The text of what is thrown; the input goes to m_refused.
    std::string Thrown() {
        try {
            OpenAs(MuxProfile_Strict);
        } catch (const mkv::NotWebmError& error) {
            m_refused = error.input;
            return error.what();
        } catch (const char* text) {
            return text;
        }
        return "nothing";
    }
    // As the filter does after a refused start.
    void Abandon() {
        m_writer.abandon();
        m_io.releaseStream();
    }

    std::optional<INT32> m_refused;
};

TEST_F(WebmRefusalTest, ACodecThatIsNotWebmsIsRefusedByItsInput) {
    RegisterAt(0, Vp8Type());
    RegisterAt(3, PcmType()); // inputs between them are not connected
    RegisterAt(4, CinepakType());
    EXPECT_EQ(Thrown(), "input 3 (A_PCM/INT/LIT) cannot go into a WebM file");
    EXPECT_EQ(m_refused, 3);
    EXPECT_TRUE(m_stream.Bytes().empty());
    EXPECT_TRUE(m_stream.Calls().empty()) << "nothing is written, sought or cut off";
    Abandon();
}

TEST_F(WebmRefusalTest, AnAttachmentIsRefused) {
    BYTE data[] = {1};
    m_writer.addAttachment({nullptr, nullptr, nullptr, 1, data, 1});
    RegisterAt(0, Vp8Type());
    EXPECT_EQ(Thrown(), "an attachment cannot go into a WebM file");
    EXPECT_EQ(m_refused, std::nullopt);
    EXPECT_TRUE(m_stream.Bytes().empty());
    Abandon();
}

TEST_F(WebmRefusalTest, WhatHasNoCodecAtAllIsRefusedAsInOtherFiles) {
    auto unknown = PcmType();
    unknown->subtype = SubtypeFromWaveTag(0x0161);
    RegisterAt(0, unknown);
    EXPECT_EQ(Thrown(), mkv::kUnsupportedCodecError);
    Abandon();
}

TEST_F(WebmRefusalTest, WebmsOwnCodecsAreWritten) {
    RegisterAt(0, Vp8Type());
    EXPECT_EQ(Thrown(), "nothing");
    EXPECT_EQ(Snapshot().docType, "webm");
    Finish();
}

TEST_F(WebmRefusalTest, AMatroskaFileTakesThemAll) {
    m_writer.setOutputFormat(CMkvWriter::kMatroskaFormat);
    BYTE data[] = {1};
    m_writer.addAttachment({nullptr, nullptr, nullptr, 1, data, 1});
    RegisterAt(0, PcmType());
    EXPECT_EQ(Thrown(), "nothing");
    Finish();
}

TEST_F(WebmRefusalTest, TheCompatibleProfileRefusesNothing) {
    BYTE data[] = {1};
    m_writer.addAttachment({nullptr, nullptr, nullptr, 1, data, 1});
    RegisterAt(0, PcmType());
    OpenAs(MuxProfile_Compatible);
    EXPECT_EQ(Snapshot().docType, "webm");
    EXPECT_EQ(Snapshot().tracks.size(), 1u);
    Finish();
}

TEST_F(WebmRefusalTest, AfterARefusalTheNextFileIsWritten) {
    RegisterAt(0, PcmType());
    EXPECT_EQ(Thrown(), "input 0 (A_PCM/INT/LIT) cannot go into a WebM file");
    Abandon();
    m_writer.setOutputFormat(CMkvWriter::kMatroskaFormat);
    RegisterAt(0, PcmType());
    EXPECT_EQ(Thrown(), "nothing");
    EXPECT_EQ(Snapshot().tracks.size(), 1u);
    Finish();
}

} // namespace
