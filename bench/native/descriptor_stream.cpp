#include "bench/native/descriptor_stream.h"

#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace bench {

int OpenInPlace(const std::string& path) {
    constexpr mode_t kAnyoneReads = 0644;
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kAnyoneReads);
    if (file < 0) {
        throw std::runtime_error("cannot write " + path);
    }
    return file;
}

void WriteAll(int file, const void* data, size_t size) {
    const auto* bytes = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t written = write(file, bytes, size);
        if (written <= 0) {
            throw std::runtime_error("a write failed");
        }
        bytes += written;
        size -= static_cast<size_t>(written);
    }
}

DescriptorStream::DescriptorStream(const std::string& path) : m_file(OpenInPlace(path)) {}

DescriptorStream::~DescriptorStream() {
    (void)ftruncate(m_file, static_cast<off_t>(Size()));
    close(m_file);
}

HRESULT DescriptorStream::Write(const void* data, ULONG size, ULONG* written) {
    if (pwrite(m_file, data, size, static_cast<off_t>(Position())) != static_cast<ssize_t>(size)) {
        return STG_E_MEDIUMFULL;
    }
    return NullStream::Write(data, size, written);
}

} // namespace bench
