#include "win/temporary_file.h"

#include <array>
#include <cstdio>
#include <filesystem>

namespace win {

namespace {

constexpr int kMaxNames = 8;

} // namespace

std::wstring FolderOf(const std::wstring& path) {
    return path.substr(0, path.size() - std::filesystem::path(path).filename().native().size());
}

std::wstring TemporaryFile::RandomName(const wchar_t* maker) {
    GUID random{};
    if (FAILED(CoCreateGuid(&random))) {
        return {};
    }
    std::array<wchar_t, 64> name{};
    std::swprintf(name.data(), name.size(), L"-%08lx%04x%04x%02x%02x%02x%02x%02x%02x%02x%02x.tmp", random.Data1,
                  random.Data2, random.Data3, random.Data4[0], random.Data4[1], random.Data4[2], random.Data4[3],
                  random.Data4[4], random.Data4[5], random.Data4[6], random.Data4[7]);
    return maker + std::wstring(name.data());
}

TemporaryFile::~TemporaryFile() {
    m_file.Reset();
    if (!m_path.empty()) {
        DeleteFileW(m_path.c_str());
    }
}

bool TemporaryFile::Create(const std::wstring& folder, DWORD access, DWORD attributes) {
    for (int i = 0; i < kMaxNames && !m_file; ++i) {
        const std::wstring name = m_newName();
        if (name.empty()) {
            return false;
        }
        std::wstring path = folder + name;
        m_file = FileHandle(CreateFileW(path.c_str(), access, 0, nullptr, CREATE_NEW, attributes, nullptr));
        if (m_file) {
            m_path = std::move(path);
        } else if (const DWORD error = GetLastError(); error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS) {
            return false;
        }
    }
    return static_cast<bool>(m_file);
}

bool TemporaryFile::Move(const std::wstring& path, DWORD flags) {
    m_file.Reset();
    if (m_path.empty() || !MoveFileExW(m_path.c_str(), path.c_str(), flags | MOVEFILE_WRITE_THROUGH)) {
        return false;
    }
    m_path.clear();
    return true;
}

} // namespace win
