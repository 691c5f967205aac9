// OneProcessor: while it lives, all threads of the process share one processor.
//
// Owner: a scope. Threads: one makes and ends it. Errors: std::runtime_error when the system refuses.
#pragma once

#include "win/platform.h"

namespace bench {

class OneProcessor {
  public:
    OneProcessor();
    ~OneProcessor();
    OneProcessor(const OneProcessor&) = delete;
    OneProcessor& operator=(const OneProcessor&) = delete;

  private:
    DWORD_PTR m_before = 0; // the processors that the process had
};

} // namespace bench
