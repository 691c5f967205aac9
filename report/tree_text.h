// The elements of a file as a tree that can be opened and closed without a script.
#pragma once

#include <string>

#include "report/file_facts.h"

namespace report {

// Of these nodes; the share of bytes is that of the whole file.
[[nodiscard]] std::string TreeText(const std::vector<Node>& nodes, UINT64 fileBytes);

} // namespace report
