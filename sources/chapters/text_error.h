// Why a file with chapters or tags cannot be followed, and where. UTF-8, without a final full stop.
#pragma once

#include <stdexcept>
#include <string>

namespace chapters {

class TextError : public std::runtime_error {
  public:
    TextError(size_t line, const std::string& reason) : std::runtime_error(reason), m_line(line) {}

    // From 1.
    [[nodiscard]] size_t Line() const { return m_line; }

  private:
    size_t m_line;
};

} // namespace chapters
