// mkvlayout [--cut] [--strict] [--clusters-may-go-back] [--dump] FILE: reads a Matroska file with the tests' own reader
// and prints what it found as JSON, or as the text of the golden files.
// Exit status: 0 the layout is right, 1 there are findings, 2 the file cannot be read.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/layout_check.h"
#include "tests/support/layout_dump.h"
#include "tests/support/layout_json.h"
#include "tests/support/source_tree.h"

namespace {

constexpr int kExitWell = 0;
constexpr int kExitFindings = 1;
constexpr int kExitFailed = 2;

struct Arguments {
    test_support::LayoutExpectations expected;
    bool dump = false;
    std::string file;
};

bool Parse(int count, char** texts, Arguments& arguments) {
    for (int i = 1; i < count; ++i) {
        const std::string_view text = texts[i];
        if (text == "--cut") {
            arguments.expected.cut = true;
        } else if (text == "--strict") {
            arguments.expected.strict = true;
        } else if (text == "--clusters-may-go-back") {
            arguments.expected.clustersMayGoBack = true;
        } else if (text == "--dump") {
            arguments.dump = true;
        } else if (text.starts_with("--") || !arguments.file.empty()) {
            return false;
        } else {
            arguments.file = text;
        }
    }
    return !arguments.file.empty();
}

int Describe(const Arguments& arguments) {
    std::ifstream file(test_support::PathInThisLane(arguments.file), std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "mkvlayout: '%s' cannot be opened\n", arguments.file.c_str());
        return kExitFailed;
    }
    const std::vector<char> chars{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const std::vector<uint8_t> bytes(chars.begin(), chars.end());
    const test_support::MatroskaLayout layout = test_support::ReadLayout(bytes);
    const std::vector<std::string> findings = test_support::CheckLayout(layout, arguments.expected);
    const std::string text = arguments.dump ? test_support::DumpLayout(layout, {.offsets = true, .masked = {}})
                                            : test_support::DescribeAsJson(layout, findings);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return findings.empty() ? kExitWell : kExitFindings;
}

} // namespace

int main(int count, char** texts) {
    Arguments arguments;
    if (!Parse(count, texts, arguments)) {
        std::fprintf(stderr, "usage: mkvlayout [--cut] [--strict] [--clusters-may-go-back] [--dump] FILE\n");
        return kExitFailed;
    }
    return Describe(arguments);
}
