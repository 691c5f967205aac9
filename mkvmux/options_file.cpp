#include "mkvmux/options_file.h"

#include <nlohmann/json.hpp>

#include "mkvmux/failure.h"
#include "mkvmux/file_bytes.h"
#include "mkvmux/text.h"

namespace mkvmux {

namespace {

// More is no list of options, and need not be read to say so.
constexpr UINT64 kMaxOptionsFileBytes = UINT64{16} << 20;

bool NamesOptionsFile(const std::string& argument) {
    return argument.starts_with('@');
}

std::vector<std::string> ArgumentsOf(const std::string& path) {
    const std::string text = ReadWholeFile(WideFromUtf8(path), kMaxOptionsFileBytes);
    const nlohmann::json json = nlohmann::json::parse(text, nullptr, false); // skips a byte order mark by itself
    if (json.is_discarded()) {
        throw Failure(path + ": is not valid JSON");
    }
    if (!json.is_array()) {
        throw Failure(path + ": is not a JSON array of strings");
    }
    std::vector<std::string> arguments;
    for (const nlohmann::json& element : json) {
        if (!element.is_string()) {
            throw Failure(path + ": element " + std::to_string(arguments.size()) + " is not a string");
        }
        arguments.push_back(element.get<std::string>());
        if (arguments.back().find('\0') != std::string::npos) {
            throw Failure(path + ": element " + std::to_string(arguments.size() - 1) + " holds a zero character");
        }
    }
    return arguments;
}

} // namespace

std::vector<std::wstring> OptionsFilesOf(const std::vector<std::string>& arguments) {
    std::vector<std::wstring> files;
    for (const std::string& argument : arguments) {
        if (NamesOptionsFile(argument)) {
            files.push_back(WideFromUtf8(argument.substr(1)));
        }
    }
    return files;
}

std::vector<std::string> ExpandOptionsFiles(const std::vector<std::string>& arguments) {
    std::vector<std::string> expanded;
    for (const std::string& argument : arguments) {
        if (!NamesOptionsFile(argument)) {
            expanded.push_back(argument);
            continue;
        }
        const std::vector<std::string> fromFile = ArgumentsOf(argument.substr(1));
        expanded.insert(expanded.end(), fromFile.begin(), fromFile.end());
    }
    return expanded;
}

} // namespace mkvmux
