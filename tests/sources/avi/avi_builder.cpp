#include "tests/sources/avi/avi_builder.h"

#include <algorithm>
#include <cstring>

#include "win/platform.h"

namespace test_avi {

namespace {

template <typename Structure>
std::string BytesOf(const Structure& structure) {
    std::string bytes(sizeof(structure), '\0');
    std::memcpy(bytes.data(), &structure, sizeof(structure));
    return bytes;
}

std::string StreamHeader(std::string_view type, UINT32 scale, UINT32 rate, UINT32 sampleSize) {
    std::string header(56, '\0');
    const auto put = [&header](size_t at, const std::string& bytes) { header.replace(at, bytes.size(), bytes); };
    put(0, std::string(type));
    put(20, Dword(scale));
    put(24, Dword(rate));
    put(44, Dword(sampleSize));
    return Chunk("strh", header);
}

} // namespace

std::string Dword(UINT32 value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i) {
        bytes.push_back(static_cast<char>(value >> (8 * i) & 0xff));
    }
    return bytes;
}

std::string Chunk(std::string_view id, std::string_view content) {
    std::string chunk(id);
    chunk += Dword(static_cast<UINT32>(content.size()));
    chunk += content;
    if (content.size() % 2 != 0) {
        chunk.push_back('\0');
    }
    return chunk;
}

std::string List(std::string_view type, std::string_view content) {
    return Chunk("LIST", std::string(type) + std::string(content));
}

std::string Riff(std::string_view type, std::string_view content) {
    return Chunk("RIFF", std::string(type) + std::string(content));
}

std::string VideoStream() {
    BITMAPINFOHEADER bitmap{};
    bitmap.biSize = sizeof(bitmap);
    bitmap.biWidth = 8;
    bitmap.biHeight = 4;
    bitmap.biPlanes = 1;
    bitmap.biBitCount = 24;
    bitmap.biCompression = 0x64697663; // 'cvid'
    return List("strl", StreamHeader("vids", 1, 25, 0) + Chunk("strf", BytesOf(bitmap)));
}

std::string AudioStream() {
    WAVEFORMATEX wave{};
    wave.wFormatTag = 1;
    wave.nChannels = 1;
    wave.nSamplesPerSec = 8000;
    wave.nAvgBytesPerSec = 16000;
    wave.nBlockAlign = 2;
    wave.wBitsPerSample = 16;
    // The oldest form of the structure, without cbSize.
    return List("strl", StreamHeader("auds", 1, 8000, 2) + Chunk("strf", BytesOf(wave).substr(0, 16)));
}

std::string IndexEntry(std::string_view id, UINT32 flags) {
    return std::string(id) + Dword(flags) + Dword(0) + Dword(0);
}

std::string AviFileOf(std::string_view movie, std::string_view behind) {
    const std::string headers = List("hdrl", Chunk("avih", std::string(56, '\0')) + VideoStream() + AudioStream());
    return Riff("AVI ", headers + List("movi", movie) + std::string(behind));
}

} // namespace test_avi
