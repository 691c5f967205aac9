// ComTest: a test with COM initialised as the tool does it, which afterwards looks whether an object is left.
#pragma once

#include <gtest/gtest.h>

#include "dshow/base_object.h"
#include "win/platform.h"

namespace test_mkvmux {

class ComTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))); }
    void TearDown() override {
        EXPECT_EQ(CBaseObject::ObjectsActive(), 0) << "an object of the tool's is still alive";
        CoUninitialize();
    }
};

} // namespace test_mkvmux
