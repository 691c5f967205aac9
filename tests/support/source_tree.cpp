#include "tests/support/source_tree.h"

#include <cstdlib>

namespace test_support {

namespace {

// Wine shows the whole file system of its host as this drive.
constexpr char kHostDrive[] = "Z:";

std::filesystem::path InThisLane(std::string path) {
#ifndef QRX_NATIVE
    if (path.starts_with('/')) {
        path.insert(0, kHostDrive);
    }
#endif
    return path;
}

} // namespace

std::filesystem::path PathFromEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr || *value == '\0' ? std::filesystem::path() : InThisLane(value);
}

std::filesystem::path TestSourcePath(const std::string& below) {
    return InThisLane(QRX_TESTS_DIR) / below;
}

} // namespace test_support
