// The page of a report: one HTML file that needs nothing else, and that runs no script.
//
// Errors: std::bad_alloc.
#pragma once

#include <string>

#include "report/file_facts.h"

namespace report {

// The name of the file is UTF-8.
[[nodiscard]] std::string PageOf(const FileFacts& facts, const std::string& fileName);

} // namespace report
