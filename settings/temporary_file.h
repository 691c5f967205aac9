// TemporaryFile: a new file under a name that nobody can guess, which takes the place of another or goes.
//
// Owner: the file and its handle; it removes what it made and nothing else. Threads: one.
// Errors: false; GetLastError tells why.
#pragma once

#include <string>

#include "win/handle.h"
#include "win/platform.h"

class TemporaryFile {
  public:
    using NameSource = std::wstring (*)();
    // As long as few file systems find too long, whatever the name of the file that it stands in for.
    [[nodiscard]] static std::wstring RandomName();

    explicit TemporaryFile(NameSource newName = RandomName) : m_newName(newName) {}
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    // The folder with its separator, or empty. Nobody else can open the file before it is moved.
    [[nodiscard]] bool Create(const std::wstring& folder, DWORD access, DWORD attributes);
    [[nodiscard]] HANDLE Get() const { return m_file.Get(); }
    // Closes it, and replaces what has that path. It stays where it was made when that is refused.
    [[nodiscard]] bool MoveTo(const std::wstring& path);

  private:
    NameSource m_newName;
    std::wstring m_path; // empty unless the file is there
    win::FileHandle m_file;
};
