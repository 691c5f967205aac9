// ReferenceCount: counts the references that others hold on an object which a test owns.
//
// Owner: the fake object that contains it; AddRef and Release of that object come here and never delete it.
// Threads: any.
// Errors: a reference still held at destruction, or one released too often, fails the running test.
#pragma once

#include <atomic>

#include "win/platform.h"

namespace test_support {

class ReferenceCount {
  public:
    explicit ReferenceCount(const char* ownerName) : m_ownerName(ownerName) {}
    ~ReferenceCount();
    ReferenceCount(const ReferenceCount&) = delete;
    ReferenceCount& operator=(const ReferenceCount&) = delete;

    ULONG Add() { return static_cast<ULONG>(++m_count); }
    ULONG Release();
    [[nodiscard]] LONG Count() const { return m_count; }

  private:
    const char* m_ownerName;
    std::atomic<LONG> m_count{0};
};

} // namespace test_support
