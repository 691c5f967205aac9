// TemporaryFile: a file name of its own in the temporary directory; what stands there is gone with the object.
#pragma once

#include <string>
#include <string_view>

namespace test_mkvmux {

class TemporaryFile {
  public:
    explicit TemporaryFile(std::wstring_view extension);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::wstring& Path() const { return m_path; }
    [[nodiscard]] bool Exists() const;
    [[nodiscard]] std::string Content() const;
    void SetContent(std::string_view bytes) const;

  private:
    std::wstring m_path;
};

// A RIFF WAVE file with PCM silence of the given length.
[[nodiscard]] std::string PcmWaveFile(unsigned seconds);

} // namespace test_mkvmux
