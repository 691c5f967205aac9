#include "mkvmux/content_kind.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "sources/base/file_source.h"
#include "sources/text/text_decoder.h"

namespace mkvmux {

namespace {

using Bytes = std::span<const BYTE>;

constexpr size_t kHeadBytes = size_t{64} << 10;
constexpr size_t kStartCodeBytes = 3;
constexpr std::string_view kAv1Begin("\x12\0\x0a", 3); // a temporal delimiter, and then a sequence header

bool StartsWith(Bytes bytes, std::string_view text) {
    return bytes.size() >= text.size() && std::equal(text.begin(), text.end(), bytes.begin(),
                                                     [](char a, BYTE b) { return static_cast<BYTE>(a) == b; });
}

// The headers of the units behind start codes, two bytes each, when the first one stands at the beginning.
std::vector<std::array<BYTE, 2>> UnitHeaders(Bytes head) {
    std::vector<std::array<BYTE, 2>> headers;
    size_t zeros = 0;
    for (size_t i = 0; i + 2 < head.size(); ++i) {
        if (head[i] == 1 && zeros + 1 >= kStartCodeBytes) {
            headers.push_back({head[i + 1], head[i + 2]});
        } else if (head[i] != 0 && headers.empty()) {
            return headers;
        }
        zeros = head[i] == 0 ? zeros + 1 : 0;
    }
    return headers;
}

// The type of an H.264 unit; 0 for what can be none at the head of a stream.
unsigned AvcType(const std::array<BYTE, 2>& header) {
    return (header[0] & 0x80U) == 0 ? header[0] & 0x1fU : 0;
}

// That of H.265: the base layer's alone.
unsigned HevcType(const std::array<BYTE, 2>& header) {
    return (header[0] & 0x81U) == 0 && header[1] == 1 ? header[0] >> 1U : 0;
}

using UnitType = unsigned (*)(const std::array<BYTE, 2>& header);

// A stream begins with its parameter sets, or with what may stand before them.
bool BeginsStream(const std::vector<std::array<BYTE, 2>>& headers, UnitType typeOf, std::array<unsigned, 3> begins,
                  unsigned sequence) {
    const unsigned first = headers.empty() ? 0 : typeOf(headers.front());
    return std::find(begins.begin(), begins.end(), first) != begins.end() &&
           std::any_of(headers.begin(), headers.end(), [&](const auto& header) { return typeOf(header) == sequence; });
}

ContentKind KindOfUnits(const std::vector<std::array<BYTE, 2>>& headers) {
    constexpr unsigned kAvcSequence = 7;
    constexpr unsigned kHevcSequence = 33;
    // SEI, sequence and delimiter; then video parameters, delimiter and SEI.
    if (BeginsStream(headers, AvcType, {6, kAvcSequence, 9}, kAvcSequence)) {
        return ContentKind::Avc;
    }
    return BeginsStream(headers, HevcType, {32, 35, 39}, kHevcSequence) ? ContentKind::Hevc : ContentKind::Unknown;
}

// The bytes of the frame that begins here; 0 when none does.
using FrameBytes = size_t (*)(Bytes bytes);

size_t AdtsFrameBytes(Bytes bytes) {
    constexpr size_t kHeaderBytes = 7;
    constexpr unsigned kRates = 13;
    if (bytes.size() < kHeaderBytes || bytes[0] != 0xff || (bytes[1] & 0xf6U) != 0xf0U ||
        ((bytes[2] >> 2U) & 0xfU) >= kRates) {
        return 0;
    }
    const size_t size = (bytes[3] & 3U) << 11U | static_cast<size_t>(bytes[4]) << 3U | bytes[5] >> 5U;
    return size < kHeaderBytes ? 0 : size;
}

// Layer III at 44.1 or 48 kHz and the like; the other layers have no likeness that is taken for another one.
size_t Layer3FrameBytes(Bytes bytes) {
    constexpr std::array<unsigned, 16> kKilobits1{0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0};
    constexpr std::array<unsigned, 16> kKilobits2{0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0};
    constexpr std::array<unsigned, 4> kHertz{44100, 48000, 32000, 0};
    constexpr size_t kHeaderBytes = 4;
    if (bytes.size() < kHeaderBytes || bytes[0] != 0xff || (bytes[1] & 0xe6U) != 0xe2U) {
        return 0;
    }
    const unsigned version = bytes[1] >> 3U & 3U; // 3: MPEG-1, 2: MPEG-2, 0: MPEG-2.5
    const unsigned kilobits = (version == 3 ? kKilobits1 : kKilobits2).at(bytes[2] >> 4U);
    const unsigned hertz = kHertz.at(bytes[2] >> 2U & 3U) >> (version == 3 ? 0U : version == 2 ? 1U : 2U);
    if (version == 1 || kilobits == 0 || hertz == 0) {
        return 0;
    }
    return size_t{version == 3 ? 144000U : 72000U} * kilobits / hertz + (bytes[2] >> 1U & 1U);
}

// A head can look like a frame by chance; that three follow each other is no chance.
bool IsSequenceOf(FrameBytes frameBytes, Bytes head) {
    constexpr int kFrames = 3;
    for (int frame = 0; frame < kFrames; ++frame) {
        const size_t size = frameBytes(head);
        if (size == 0 || size > head.size()) {
            return false;
        }
        head = head.subspan(size);
    }
    return true;
}

ContentKind KindOfText(Bytes head) {
    constexpr size_t kLines = 3; // a number and a timing, behind an empty line perhaps
    size_t seen = 0;
    const std::string decoded = subtitles::DecodeText(head);
    subtitles::LineReader lines(decoded);
    while (const auto line = lines.Next()) {
        const std::string_view text = subtitles::Trimmed(*line);
        if (text.empty()) {
            continue;
        }
        if (seen == 0 && text == "[Script Info]") {
            return ContentKind::Ass;
        }
        if (text.find("-->") != std::string_view::npos && text.find_first_of("0123456789") == 0 &&
            text.find(':') < text.find("-->")) {
            return ContentKind::SubRip;
        }
        const bool isNumber = text.find_first_not_of("0123456789") == std::string_view::npos;
        if (!isNumber || ++seen == kLines) {
            break;
        }
    }
    return ContentKind::Unknown;
}

// The tag that often stands before sound; 0 when none does.
UINT64 TagBytes(Bytes head) {
    constexpr size_t kTagHeaderBytes = 10;
    if (head.size() < kTagHeaderBytes || !StartsWith(head, "ID3")) {
        return 0;
    }
    UINT64 size = 0; // seven bits a byte
    for (const BYTE byte : head.subspan(6, 4)) {
        size = size << 7U | (byte & 0x7fU);
    }
    return size + kTagHeaderBytes;
}

} // namespace

ContentKind KindOfBytes(Bytes head) {
    if (StartsWith(head, "\x1a\x45\xdf\xa3")) {
        return ContentKind::Matroska;
    }
    if (StartsWith(head, "DKIF")) {
        return ContentKind::Ivf;
    }
    if (StartsWith(head, kAv1Begin)) {
        return ContentKind::Av1;
    }
    if (StartsWith(head, "fLaC")) {
        return ContentKind::Flac;
    }
    if (IsSequenceOf(AdtsFrameBytes, head)) {
        return ContentKind::Adts;
    }
    if (IsSequenceOf(Layer3FrameBytes, head)) {
        return ContentKind::MpegAudio;
    }
    if (const auto headers = UnitHeaders(head); !headers.empty()) {
        return KindOfUnits(headers);
    }
    return KindOfText(head);
}

ContentKind KindOfFile(const std::wstring& path) {
    source::FileSource file;
    if (FAILED(file.Open(path))) {
        return ContentKind::Unknown;
    }
    std::vector<BYTE> buffer(kHeadBytes);
    Bytes head = Bytes(buffer).first(file.ReadAt(0, buffer));
    if (const UINT64 tag = TagBytes(head); tag != 0) {
        head = Bytes(buffer).first(file.ReadAt(tag, buffer));
    }
    return KindOfBytes(head);
}

} // namespace mkvmux
