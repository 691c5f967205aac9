// SystemCode: while one lives, what this thread does is the system's doing or the test's, not the product's: no
// allocation of it fails (tests/faults). Fakes and the functions of the Linux lane say so where they allocate.
//
// Threads: of the thread that made it. Errors: none.
#pragma once

#include <utility>

namespace test_support {

// So many scopes of the thread are the system's.
inline thread_local int t_systemDepth = 0;

class SystemCode {
  public:
    SystemCode() { ++t_systemDepth; }
    ~SystemCode() { --t_systemDepth; }
    SystemCode(const SystemCode&) = delete;
    SystemCode& operator=(const SystemCode&) = delete;

    [[nodiscard]] static bool IsRunning() { return t_systemDepth > 0; }
};

// The other way round: what a test calls of the product.
class ProductCode {
  public:
    ProductCode() : m_depth(std::exchange(t_systemDepth, 0)) {}
    ~ProductCode() { t_systemDepth = m_depth; }
    ProductCode(const ProductCode&) = delete;
    ProductCode& operator=(const ProductCode&) = delete;

  private:
    const int m_depth;
};

} // namespace test_support
