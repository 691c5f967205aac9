#include "tests/support/source_tree.h"

#include <cstdlib>

namespace test_support {

std::filesystem::path PathInThisLane(std::string path) {
#ifndef QRX_NATIVE
    if (path.starts_with('/')) {
        path.insert(0, "Z:"); // where Wine shows the whole file system of its host
    }
#endif
    return path;
}

std::filesystem::path PathFromEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr || *value == '\0' ? std::filesystem::path() : PathInThisLane(value);
}

std::filesystem::path TestSourcePath(const std::string& below) {
    return PathInThisLane(QRX_TESTS_DIR) / below;
}

} // namespace test_support
