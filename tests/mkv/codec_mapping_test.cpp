// The codec-specific part of a track entry, as the library renders it and our own reader reads it back.
#include "mkv/codec_mapping.h"

#include <gtest/gtest.h>

#include <ebml/MemIOCallback.h>
#include <matroska/KaxTracks.h>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "mkv/writer_errors.h"
#include "tests/support/ebml_reader.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using mkv_test::Bytes;
using mkv_test::FromHex;
using mkv_test::ToHex;
using test_support::EbmlElement;
using test_support::MediaTypeValue;
using test_support::Mpeg2VideoType;
using test_support::VideoInfoType;
using test_support::WaveType;

constexpr uint32_t kDisplayWidthId = 0x54b0;
constexpr uint32_t kDisplayHeightId = 0x54ba;
constexpr uint32_t kSamplingFrequencyId = 0xb5;
constexpr uint32_t kChannelsId = 0x9f;
constexpr uint32_t kBitDepthId = 0x6264;

// A rendered track entry and what was read from it.
class RenderedEntry {
  public:
    explicit RenderedEntry(const MediaTypeValue& type) {
        libmatroska::KaxTrackEntry entry;
        m_codecId = mkv::MapCodec(type.Get(), entry);
        // What every entry must have besides, to be rendered at all.
        libebml::GetChild<libmatroska::KaxTrackNumber>(entry).SetValue(1);
        libebml::GetChild<libmatroska::KaxTrackUID>(entry).SetValue(1);
        libebml::GetChild<libmatroska::KaxTrackType>(entry).SetValue(1);
        libebml::GetChild<libmatroska::KaxCodecID>(entry).SetValue(m_codecId);
        libebml::MemIOCallback output;
        entry.Render(output);
        m_bytes.assign(output.GetDataBuffer(), output.GetDataBuffer() + output.GetDataBufferSize());
        m_tree = test_support::ReadEbml(m_bytes);
    }

    [[nodiscard]] const std::string& CodecId() const { return m_codecId; }
    [[nodiscard]] const EbmlElement* Find(uint32_t id) const { return m_tree.elements.at(0).Child(id); }
    [[nodiscard]] const EbmlElement* Find(uint32_t master, uint32_t id) const {
        const EbmlElement* const parent = Find(master);
        return parent == nullptr ? nullptr : parent->Child(id);
    }
    [[nodiscard]] std::optional<uint64_t> Number(const EbmlElement* element) const {
        return element == nullptr ? std::nullopt : test_support::UnsignedOf(m_bytes, *element);
    }
    [[nodiscard]] std::optional<double> Float(const EbmlElement* element) const {
        return element == nullptr ? std::nullopt : test_support::FloatOf(m_bytes, *element);
    }
    [[nodiscard]] std::string Binary(const EbmlElement* element) const {
        return element == nullptr ? "none" : ToHex(test_support::DataOf(m_bytes, *element));
    }

  private:
    std::string m_codecId;
    Bytes m_bytes;
    test_support::EbmlTree m_tree;
};

using namespace test_support::ebml_id;

TEST(CodecMappingTest, AVideoEntryCarriesItsFieldsAndHasLacingSwitchedOff) {
    const RenderedEntry entry(Mpeg2VideoType(mediasubtype::kMp4v, {720, 576, 400000, 16, 9}, FromHex("000001b0f5")));
    EXPECT_EQ(entry.CodecId(), "V_MPEG4/ISO/ASP");
    EXPECT_EQ(entry.Number(entry.Find(kFlagLacing)), 0u);
    EXPECT_EQ(entry.Number(entry.Find(kDefaultDuration)), 40'000'000u);
    EXPECT_EQ(entry.Number(entry.Find(kVideo, kPixelWidth)), 720u);
    EXPECT_EQ(entry.Number(entry.Find(kVideo, kPixelHeight)), 576u);
    EXPECT_EQ(entry.Number(entry.Find(kVideo, kDisplayWidthId)), 16u);
    EXPECT_EQ(entry.Number(entry.Find(kVideo, kDisplayHeightId)), 9u);
    EXPECT_EQ(entry.Binary(entry.Find(kCodecPrivate)), "000001b0f5");
    EXPECT_EQ(entry.Find(kAudio), nullptr);
}

TEST(CodecMappingTest, Vp8HasNeitherDisplaySizeNorPrivateData) {
    const RenderedEntry entry(VideoInfoType(mediasubtype::kVp8));
    EXPECT_EQ(entry.CodecId(), "V_VP8");
    EXPECT_EQ(entry.Number(entry.Find(kVideo, kPixelWidth)), 320u);
    EXPECT_EQ(entry.Find(kVideo, kDisplayWidthId), nullptr);
    EXPECT_EQ(entry.Find(kVideo, kDisplayHeightId), nullptr);
    EXPECT_EQ(entry.Find(kCodecPrivate), nullptr);
}

TEST(CodecMappingTest, ANegativeHeightIsWrittenAsStored) {
    const RenderedEntry entry(VideoInfoType(GUID_NULL, {320, -240, 400000, 4, 3}));
    EXPECT_EQ(entry.Number(entry.Find(kVideo, kPixelHeight)), 0xffffffffffffff10ULL);
}

// Lacing is on by default in Matroska, so the flag that says so is left out of the file.
TEST(CodecMappingTest, AnAudioEntryCarriesItsFieldsAndHasLacingSwitchedOn) {
    const MediaTypeValue type = WaveType(mediasubtype::kRawAac, {44100, 6, 0, 0}, FromHex("1210"));
    const RenderedEntry entry(type);
    EXPECT_EQ(entry.CodecId(), "A_AAC");
    EXPECT_EQ(entry.Float(entry.Find(kAudio, kSamplingFrequencyId)), 44100.0);
    EXPECT_EQ(entry.Number(entry.Find(kAudio, kChannelsId)), 6u);
    EXPECT_EQ(entry.Number(entry.Find(kAudio, kBitDepthId)), 0u);
    EXPECT_EQ(entry.Binary(entry.Find(kCodecPrivate)), "1210");
    EXPECT_EQ(entry.Find(kVideo), nullptr);
    EXPECT_EQ(entry.Find(kDefaultDuration), nullptr);
    EXPECT_EQ(entry.Find(kFlagLacing), nullptr);

    libmatroska::KaxTrackEntry lacing;
    ASSERT_EQ(mkv::MapCodec(type.Get(), lacing), "A_AAC");
    EXPECT_NE(libebml::FindChild<libmatroska::KaxTrackFlagLacing>(lacing), nullptr);
    EXPECT_TRUE(lacing.LacingEnabled());
}

TEST(CodecMappingTest, AnEmptyPrivateElementIsWrittenWithNoBytes) {
    const RenderedEntry entry(WaveType(mediasubtype::kRawAac));
    ASSERT_NE(entry.Find(kCodecPrivate), nullptr);
    EXPECT_EQ(entry.Find(kCodecPrivate)->dataSize, 0u);
}

TEST(CodecMappingTest, ASubtitleEntryCarriesThreeSecondsAndItsHeader) {
    const RenderedEntry entry(test_support::SubtitleType(mediasubtype::kAss, FromHex("5b5d")));
    EXPECT_EQ(entry.CodecId(), "S_TEXT/ASS");
    EXPECT_EQ(entry.Number(entry.Find(kDefaultDuration)), 3'000'000'000u);
    EXPECT_EQ(entry.Binary(entry.Find(kCodecPrivate)), "5b5d");
    EXPECT_EQ(entry.Find(kFlagLacing), nullptr);
    EXPECT_EQ(entry.Find(kVideo), nullptr);
    EXPECT_EQ(entry.Find(kAudio), nullptr);
}

TEST(CodecMappingTest, AnUnsupportedTypeGivesNoIdentifier) {
    EXPECT_EQ(RenderedEntry(Mpeg2VideoType(GUID_NULL, {}, {})).CodecId(), "");
    EXPECT_EQ(RenderedEntry(WaveType(SubtypeFromWaveTag(0x0161))).CodecId(), "");
    MediaTypeValue other = WaveType(mediasubtype::kPcm);
    other->majortype = MEDIATYPE_Stream;
    EXPECT_EQ(RenderedEntry(other).CodecId(), "");
}

TEST(CodecMappingTest, TheIdentifierAloneIsTheSame) {
    for (const MediaTypeValue& type :
         {Mpeg2VideoType(mediasubtype::kAvc1, {}, {}), WaveType(mediasubtype::kOpus), test_support::TextType(),
          test_support::SubtitleType(mediasubtype::kVobSub), WaveType(SubtypeFromWaveTag(0x0161)),
          Mpeg2VideoType(mediasubtype::kAvc1, {}, FromHex("0004"))}) {
        EXPECT_EQ(media::CodecIdOf(type.Get()), RenderedEntry(type).CodecId());
    }
    EXPECT_EQ(media::CodecIdOf(WaveType(mediasubtype::kOpus).Get()), "A_OPUS");
}

TEST(CodecMappingTest, TheTrackTypeFollowsTheMajorTypeAlone) {
    MediaTypeValue type;
    const auto trackTypeOf = [&type](const GUID& major) {
        type->majortype = major;
        return mkv::TrackTypeOf(type.Get());
    };
    EXPECT_EQ(trackTypeOf(MEDIATYPE_Video), 1);
    EXPECT_EQ(trackTypeOf(MEDIATYPE_Audio), 2);
    EXPECT_EQ(trackTypeOf(MEDIATYPE_Text), 17);
    EXPECT_EQ(trackTypeOf({0xe487eb08, 0x6b26, 0x4be9, {0x9d, 0xd3, 0x99, 0x34, 0x34, 0xd3, 0x13, 0xfd}}), 17);
}

TEST(CodecMappingTest, AnyOtherMajorTypeThrowsItsText) {
    MediaTypeValue type;
    for (const GUID& major : {GUID_NULL, MEDIATYPE_Stream, MEDIATYPE_Midi}) {
        type->majortype = major;
        try {
            (void)mkv::TrackTypeOf(type.Get());
            ADD_FAILURE() << "nothing was thrown";
        } catch (const char* error) {
            EXPECT_STREQ(error, "CMkvWriter::getTrackType unsupported type");
        }
    }
    EXPECT_STREQ(mkv::kUnsupportedTypeError, "CMkvWriter::getTrackType unsupported type");
    EXPECT_STREQ(mkv::kUnsupportedCodecError, "CMkvWriter::addTrack unsupported codec");
}

} // namespace
