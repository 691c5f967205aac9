// ByteScript: a fuzzer's input as a row of choices. What lies behind its end is 0, so that every input is a whole
// script and a cut one is a shorter one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace fuzz {

class ByteScript {
  public:
    ByteScript(const std::uint8_t* data, size_t size) : m_rest(data, size) {}

    [[nodiscard]] bool IsAtEnd() const { return m_rest.empty(); }
    std::uint8_t Byte() {
        if (m_rest.empty()) {
            return 0;
        }
        const std::uint8_t byte = m_rest.front();
        m_rest = m_rest.subspan(1);
        return byte;
    }
    // Below the bound, which is 256 at most.
    size_t Below(size_t bound) { return Byte() % bound; }

  private:
    std::span<const std::uint8_t> m_rest;
};

} // namespace fuzz
