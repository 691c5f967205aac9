#include "sources/base/file_source.h"

namespace source {

HRESULT FileSource::Open(const WideString& path) {
    m_file.Reset(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                             nullptr));
    LARGE_INTEGER size{};
    if (!m_file || GetFileSizeEx(m_file.Get(), &size) == FALSE) {
        return HRESULT_FROM_WIN32(GetLastError());
    }
    m_size = static_cast<UINT64>(size.QuadPart);
    return S_OK;
}

size_t FileSource::ReadAt(UINT64 offset, std::span<BYTE> buffer) const {
    LARGE_INTEGER position{};
    position.QuadPart = static_cast<LONGLONG>(offset);
    DWORD got = 0;
    if (SetFilePointerEx(m_file.Get(), position, nullptr, FILE_BEGIN) == FALSE ||
        ReadFile(m_file.Get(), buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr) == FALSE) {
        return 0;
    }
    return got;
}

} // namespace source
