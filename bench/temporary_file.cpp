#include "bench/temporary_file.h"

#include <stdexcept>

namespace bench {

namespace {

std::wstring TemporaryPath() {
    wchar_t folder[MAX_PATH + 1] = {};
    wchar_t path[MAX_PATH + 1] = {};
    if (GetTempPathW(MAX_PATH, folder) == 0 || GetTempFileNameW(folder, L"mux", 0, path) == 0) {
        throw std::runtime_error("no temporary file");
    }
    return path;
}

} // namespace

TemporaryFile::TemporaryFile() : m_path(TemporaryPath()) {
    m_file = new mkvmux::CFileStream(nullptr); // its references delete it
    m_stream = static_cast<IStream*>(m_file);
    constexpr bool kOverwrite = true;
    if (FAILED(m_file->Create(m_path, kOverwrite))) {
        throw std::runtime_error("the temporary file cannot be written");
    }
}

TemporaryFile::~TemporaryFile() {
    m_stream.Reset(); // closes the file
    DeleteFileW(m_path.c_str());
}

} // namespace bench
