// What a fuzzer asserts: a promise that does not hold ends the program, with a line that says where, and libFuzzer
// keeps the input.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

inline void Require(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (!holds) {
        std::fprintf(stderr, "%s:%d: ERROR: what is required here does not hold\n", file, line);
        std::abort();
    }
}

} // namespace fuzz
