// IdentifyJson: the identification of inputs for programs to read.
#pragma once

#include <string>
#include <vector>

#include "mkvmux/source_streams.h"

namespace mkvmux {

struct IdentifiedInput {
    std::wstring path;
    std::vector<SourceStream> streams;
};

// One document, indented, UTF-8; docs/mkvmux.md has its members.
[[nodiscard]] std::string IdentificationAsJson(const std::vector<IdentifiedInput>& inputs, bool isStrict);

} // namespace mkvmux
