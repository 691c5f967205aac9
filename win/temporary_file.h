// TemporaryFile: a new file under a name that nobody can guess, which takes the place of another or goes.
//
// Owner: the file and its handle; it removes what it made and nothing else. Threads: one.
// Errors: false; GetLastError tells why.
#pragma once

#include <string>
#include <utility>

#include "win/handle.h"
#include "win/platform.h"

namespace win {

// Where that file lies, with what separates it from the name: the drive alone for "C:name"; empty for the current
// folder.
[[nodiscard]] std::wstring FolderOf(const std::wstring& path);

class TemporaryFile {
  public:
    using NameSource = std::wstring (*)();
    // As long as few file systems find too long, whatever the name of the file that it stands in for. It begins with
    // who made it, for those who find one that was left behind.
    [[nodiscard]] static std::wstring RandomName(const wchar_t* maker);

    explicit TemporaryFile(NameSource newName) : m_newName(newName) {}
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    // The folder as FolderOf answers it. Nobody else can open the file before it is moved.
    [[nodiscard]] bool Create(const std::wstring& folder, DWORD access, DWORD attributes);
    [[nodiscard]] HANDLE Get() const { return m_file.Get(); }
    // The handle, which is to be closed before the file can be moved or goes.
    [[nodiscard]] FileHandle Take() { return std::move(m_file); }
    // Closes it, and replaces what has that path. It stays where it was made when that is refused.
    [[nodiscard]] bool MoveTo(const std::wstring& path) { return Move(path, MOVEFILE_REPLACE_EXISTING); }
    // The same, but what has that path stays: then it is refused.
    [[nodiscard]] bool MoveToFreePath(const std::wstring& path) { return Move(path, 0); }

  private:
    [[nodiscard]] bool Move(const std::wstring& path, DWORD flags);

    NameSource m_newName;
    std::wstring m_path; // empty unless the file is there
    FileHandle m_file;
};

} // namespace win
