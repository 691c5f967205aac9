#include "tests/support/written_files.h"

#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/matroska_layout.h"
#include "tests/support/source_tree.h"

namespace test_support {

namespace {

std::string EndingOf(std::span<const uint8_t> bytes, WrittenFile kind) {
    const std::string type = ReadLayout(bytes).docType == "webm" ? ".webm" : ".mkv";
    return (kind == WrittenFile::CutOnPurpose ? ".cut" : "") + type;
}

std::string WithoutEnding(const std::string& name) {
    for (const std::string ending : {".mkv", ".webm"}) {
        if (name.ends_with(ending)) {
            return name.substr(0, name.size() - ending.size());
        }
    }
    return name;
}

} // namespace

void SaveForJudges(const std::string& name, std::span<const uint8_t> bytes, WrittenFile kind) {
    const std::filesystem::path directory = PathFromEnvironment("QRX_JUDGE_DIR");
    if (directory.empty()) {
        return;
    }
    const std::filesystem::path path = directory / (WithoutEnding(name) + EndingOf(bytes, kind));
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        ADD_FAILURE() << path << " cannot be written for the judges";
    }
}

} // namespace test_support
