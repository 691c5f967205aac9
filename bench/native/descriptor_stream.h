// DescriptorStream: an IStream over a file that is there already and is overwritten in place, so that no run pays for
// fresh pages. The file is cut off behind what was written when the stream goes.
//
// Units: bytes. Owner: the measurement; references are counted, none deletes it. Threads: one caller at a time.
// Errors: std::runtime_error when the file cannot be opened; results of calls otherwise.
#pragma once

#include <string>

#include "bench/null_stream.h"

namespace bench {

class DescriptorStream final : public NullStream {
  public:
    explicit DescriptorStream(const std::string& path);
    ~DescriptorStream();

    HRESULT STDMETHODCALLTYPE Write(const void* data, ULONG size, ULONG* written) override;

  private:
    const int m_file;
};

// Opens a file to be overwritten in place, which it makes if there is none; std::runtime_error otherwise.
[[nodiscard]] int OpenInPlace(const std::string& path);
// Writes all of it there; std::runtime_error otherwise.
void WriteAll(int file, const void* data, size_t size);

} // namespace bench
