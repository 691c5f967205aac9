#include "tests/support/golden_file.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/support/source_tree.h"

namespace test_support {

namespace {

std::string ReadText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::erase(text, '\r'); // a checkout may have changed the line ends
    return text;
}

testing::AssertionResult Rewrite(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    return file ? testing::AssertionSuccess() : testing::AssertionFailure() << path << " cannot be written";
}

testing::AssertionResult DescribeDifference(const std::filesystem::path& path, const std::string& expected,
                                            const std::string& actual) {
    std::istringstream expectedLines(expected);
    std::istringstream actualLines(actual);
    std::string expectedLine;
    std::string actualLine;
    int number = 1;
    while (std::getline(expectedLines, expectedLine) && std::getline(actualLines, actualLine) &&
           expectedLine == actualLine) {
        ++number;
        expectedLine.clear();
        actualLine.clear();
    }
    return testing::AssertionFailure() << path << " differs at line " << number << "\n  golden: " << expectedLine
                                       << "\n  now:    " << actualLine << "\nAll of it now:\n"
                                       << actual;
}

} // namespace

testing::AssertionResult MatchesGolden(const std::string& folder, const std::string& name, const std::string& text) {
    const std::filesystem::path path = TestSourcePath(folder) / "golden" / (name + ".txt");
    if (std::getenv("QRX_REWRITE_GOLDEN") != nullptr) {
        return Rewrite(path, text);
    }
    if (!std::filesystem::exists(path)) {
        return testing::AssertionFailure() << path << " does not exist; QRX_REWRITE_GOLDEN=1 makes it\n" << text;
    }
    const std::string expected = ReadText(path);
    return expected == text ? testing::AssertionSuccess() : DescribeDifference(path, expected, text);
}

} // namespace test_support
