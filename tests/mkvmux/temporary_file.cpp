#include "tests/mkvmux/temporary_file.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "win/platform.h"

namespace test_mkvmux {

namespace {

constexpr unsigned kSamplesPerSecond = 8000;
constexpr unsigned kBytesPerSample = 2;
constexpr unsigned kPcmTag = 1;

std::string LittleEndian(unsigned value, size_t bytes) {
    std::string text;
    for (size_t i = 0; i < bytes; ++i) {
        text.push_back(static_cast<char>(value >> (8 * i) & 0xff));
    }
    return text;
}

std::string Chunk(const char* name, const std::string& content) {
    return name + LittleEndian(static_cast<unsigned>(content.size()), 4) + content;
}

} // namespace

TemporaryFile::TemporaryFile(std::wstring_view extension) {
    static unsigned s_count = 0;
    std::array<WCHAR, MAX_PATH + 1> directory{};
    GetTempPathW(static_cast<DWORD>(directory.size()), directory.data());
    m_path = directory.data();
    m_path += L"qrx_mkvmux_" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++s_count);
    m_path += extension;
}

TemporaryFile::~TemporaryFile() {
    DeleteFileW(m_path.c_str());
}

bool TemporaryFile::Exists() const {
    return GetFileAttributesW(m_path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string TemporaryFile::Content() const {
    std::ifstream file(std::filesystem::path(m_path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void TemporaryFile::SetContent(std::string_view bytes) const {
    std::ofstream file(std::filesystem::path(m_path), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string PcmWaveFile(unsigned seconds) {
    const std::string format = LittleEndian(kPcmTag, 2) + LittleEndian(1, 2) + LittleEndian(kSamplesPerSecond, 4) +
                               LittleEndian(kSamplesPerSecond * kBytesPerSample, 4) + LittleEndian(kBytesPerSample, 2) +
                               LittleEndian(8 * kBytesPerSample, 2);
    const std::string samples(size_t{seconds} * kSamplesPerSecond * kBytesPerSample, '\0');
    return Chunk("RIFF", "WAVE" + Chunk("fmt ", format) + Chunk("data", samples));
}

} // namespace test_mkvmux
