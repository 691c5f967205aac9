#include "tests/support/reference_count.h"

#include <gtest/gtest.h>

namespace test_support {

ReferenceCount::~ReferenceCount() {
    if (m_count != 0) {
        ADD_FAILURE() << m_ownerName << " is destroyed while " << m_count << " references are still held";
    }
}

ULONG ReferenceCount::Release() {
    const LONG left = --m_count;
    if (left < 0) {
        ADD_FAILURE() << m_ownerName << " is released more often than referenced";
        return 0;
    }
    return static_cast<ULONG>(left);
}

} // namespace test_support
