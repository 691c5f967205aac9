// Where tests find and leave files, in the lane they run in: natively, or on drive Z: of a Wine prefix.
#pragma once

#include <filesystem>
#include <string>

namespace test_support {

// A path of this lane; absolute Linux paths may be given in both.
[[nodiscard]] std::filesystem::path PathInThisLane(std::string path);
// The environment variable as a path of this lane; empty when it is not set.
[[nodiscard]] std::filesystem::path PathFromEnvironment(const char* name);
// A path below tests/ of the source tree.
[[nodiscard]] std::filesystem::path TestSourcePath(const std::string& below);

} // namespace test_support
