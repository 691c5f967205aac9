// ObjectCountTest: a fixture that finds every object of the base classes gone when the test ends.
#pragma once

#include <gtest/gtest.h>

#include "dshow/base_object.h"

namespace dshow_test {

class ObjectCountTest : public testing::Test {
  protected:
    void TearDown() override { EXPECT_EQ(CBaseObject::ObjectsActive(), m_before) << "objects are left behind"; }

    // Objects made since the test began and still alive.
    [[nodiscard]] LONG LivingObjects() const { return CBaseObject::ObjectsActive() - m_before; }

  private:
    const LONG m_before = CBaseObject::ObjectsActive();
};

} // namespace dshow_test
