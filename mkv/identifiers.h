// CIdentifiers: the unique identifiers of one file: random, never 0, no two alike.
//
// Owner: the file being written. Threads: the writer's. Errors: std::bad_alloc; what the system's random numbers throw.
#pragma once

#include <array>
#include <optional>
#include <random>
#include <set>

#include "win/platform.h"

namespace mkv {

class CIdentifiers {
  public:
    // With a seed other than 0 always the same sequence, else the system's random numbers.
    explicit CIdentifiers(UINT64 seed);

    [[nodiscard]] UINT64 next();
    // Given by somebody else: taken as it is when it is not 0 and new, else replaced.
    [[nodiscard]] UINT64 nextOr(UINT64 wanted);
    using Uuid = std::array<BYTE, 16>;
    [[nodiscard]] Uuid nextUuid();

  private:
    [[nodiscard]] UINT64 draw();

    bool m_isSeeded;
    std::mt19937_64 m_seeded;
    std::optional<std::random_device> m_system; // opened when the first number is asked for
    std::set<UINT64> m_given;
};

} // namespace mkv
