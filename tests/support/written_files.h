// The whole files that tests write, kept for the programs that judge them.
//
// Stored when the environment variable QRX_JUDGE_DIR names a directory; otherwise nothing happens.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace test_support {

enum class WrittenFile {
    Finished,
    CutOnPurpose, // a recording that was not finalised; the ending becomes .cut.mkv
};

// The ending of `name` is replaced by the document type's; the rest names the scenario and is unique among all suites.
void SaveForJudges(const std::string& name, std::span<const uint8_t> bytes, WrittenFile kind = WrittenFile::Finished);

} // namespace test_support
