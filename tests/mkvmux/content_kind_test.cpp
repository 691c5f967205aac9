#include "mkvmux/content_kind.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/mkvmux/temporary_file.h"

namespace mkvmux {
namespace {

using namespace std::string_view_literals;

ContentKind KindOf(std::string_view text) {
    return KindOfBytes(std::span(reinterpret_cast<const BYTE*>(text.data()), text.size()));
}

std::string Repeated(std::string_view header, size_t size, int count) {
    std::string frame(header);
    frame.resize(size);
    std::string frames;
    for (int i = 0; i < count; ++i) {
        frames += frame;
    }
    return frames;
}

// 44.1 kHz, one channel, 100 bytes a frame.
std::string AdtsFrames(int count) {
    return Repeated("\xff\xf1\x50\x40\x0c\x9f\xfc"sv, 100, count);
}

// 128 kbit/s at 44.1 kHz.
std::string Layer3Frames(int count) {
    return Repeated("\xff\xfb\x90\x64"sv, 417, count);
}

TEST(ContentKindTest, SeesWhatTheOwnSourcesRead) {
    EXPECT_EQ(KindOf("\x1a\x45\xdf\xa3\x9f"sv), ContentKind::Matroska);
    EXPECT_EQ(KindOf("\0\0\0\1\x67\x64\0\x0b\0\0\0\1\x68\xeb\xe3"sv), ContentKind::Avc);
    EXPECT_EQ(KindOf("\0\0\1\x09\xf0\0\0\1\x67\x64\0\x0b\0"sv), ContentKind::Avc);
    EXPECT_EQ(KindOf("\0\0\0\1\x40\1\x0c\0\0\0\1\x42\1\1\0"sv), ContentKind::Hevc);
    EXPECT_EQ(KindOf("DKIF\0\0\x20\0AV01"sv), ContentKind::Ivf);
    EXPECT_EQ(KindOf("\x12\0\x0a\x0b"sv), ContentKind::Av1);
    EXPECT_EQ(KindOf("\x12\0\x32\x0b"sv), ContentKind::Unknown);
    EXPECT_EQ(KindOf("1\r\n00:00:01,000 --> 00:00:02,000\r\nA\r\n"), ContentKind::SubRip);
    EXPECT_EQ(KindOf("\xef\xbb\xbf\n1\n00:00:01,000 --> 00:00:02,000\nA\n"), ContentKind::SubRip);
    EXPECT_EQ(KindOf("\xef\xbb\xbf[Script Info]\nTitle: a\n"), ContentKind::Ass);
    EXPECT_EQ(KindOf("\xff\xfe[\0S\0c\0r\0i\0p\0t\0 \0I\0n\0f\0o\0]\0\n\0"sv), ContentKind::Ass);
}

TEST(ContentKindTest, SeesSoundByFramesThatFollowEachOther) {
    EXPECT_EQ(KindOf(AdtsFrames(3)), ContentKind::Adts);
    EXPECT_EQ(KindOf(Layer3Frames(3)), ContentKind::MpegAudio);
    EXPECT_EQ(KindOf("fLaC\0\0\0\x22"sv), ContentKind::Flac);
    EXPECT_EQ(KindOf(AdtsFrames(2) + "and then no frame at all"), ContentKind::Unknown);
    EXPECT_EQ(KindOf(Layer3Frames(1) + AdtsFrames(1)), ContentKind::Unknown);
}

TEST(ContentKindTest, ATagBeforeTheSoundIsSkipped) {
    const test_mkvmux::TemporaryFile file(L".mp3");
    const std::string tag = std::string("ID3\4\0\0\0\0\1\x10"sv) + std::string(144, 'x');
    file.SetContent(tag + AdtsFrames(4));
    EXPECT_EQ(KindOfFile(file.Path()), ContentKind::Adts);
    file.SetContent("ID3\4\0\0\x7f\x7f\x7f\x7f and nothing more"sv);
    EXPECT_EQ(KindOfFile(file.Path()), ContentKind::Unknown);
    EXPECT_EQ(KindOfFile(L"no such file"), ContentKind::Unknown);
}

TEST(ContentKindTest, DoesNotGuess) {
    for (const std::string_view text :
         {""sv, "\0\0\1"sv, "\0\0\1\xba\x44\0\4\0\0\0\1\xe0"sv, "\0\0\1\xb3\x14\0\xf0"sv, "\0\0\1\xb0\1\0\0\1\xb5"sv,
          "\0\0\0\1\x65\x88\x84\0"sv, "\0\0\0\1\x67"sv.substr(0, 4), "RIFF\0\0\0\0AVI LIST"sv, "ID3"sv,
          "WEBVTT\n\n00:01.000 --> 00:02.000\nA\n"sv, "notes\n00:00:01,000 --> 00:00:02,000\n"sv, "1\n2\n3\n4\n"sv,
          "-->"sv, "\xff\xff\xff\xff\xff\xff\xff\xff"sv, "OggS"sv}) {
        EXPECT_EQ(KindOf(text), ContentKind::Unknown) << testing::PrintToString(text);
    }
}

} // namespace
} // namespace mkvmux
