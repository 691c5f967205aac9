// TemporaryFile: a file of the system's folder for temporary files, as a stream; deleted with this object.
//
// Owner: the measurement. Threads: as the stream. Errors: std::runtime_error when it cannot be made.
#pragma once

#include <string>

#include "mkvmux/file_stream.h"
#include "win/com_ptr.h"

namespace bench {

class TemporaryFile {
  public:
    TemporaryFile();
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] IStream& Stream() { return *m_stream.Get(); }
    [[nodiscard]] UINT64 Size() const { return m_file->WrittenEnd(); }

  private:
    std::wstring m_path;
    win::ComPtr<IStream> m_stream;
    mkvmux::CFileStream* m_file = nullptr; // behind m_stream
};

} // namespace bench
