// Golden files: text dumps that are kept beside the tests, in tests/FOLDER/golden/NAME.txt.
//
// A test compares with one; it is rewritten only when the environment variable QRX_REWRITE_GOLDEN is set, and the
// difference is then read before it is committed.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace test_support {

// Success when the file says the same; otherwise a failure that names the first line that differs.
[[nodiscard]] testing::AssertionResult MatchesGolden(const std::string& folder, const std::string& name,
                                                     const std::string& text);

} // namespace test_support
