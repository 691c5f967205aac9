#include "mkvmux/input_guard.h"

#include <filesystem>
#include <string>
#include <vector>

#include "mkvmux/failure.h"
#include "mkvmux/muxer_settings.h"
#include "mkvmux/same_file.h"
#include "mkvmux/split_options.h"
#include "mkvmux/text.h"

namespace mkvmux {

namespace {

namespace fs = std::filesystem;

struct WrittenFile {
    std::wstring path;
    const char* purpose;
    bool mayExist;
};

std::vector<std::wstring> ReadFiles(const Options& options) {
    std::vector<std::wstring> files = options.optionsFiles;
    for (const InputOptions& input : options.inputs) {
        files.push_back(input.path);
    }
    for (const AttachmentOptions& attachment : options.attachments) {
        files.push_back(attachment.path);
    }
    for (const std::wstring* path : {&options.chapters.chapters, &options.chapters.globalTags, &options.loadConfig}) {
        if (!path->empty()) {
            files.push_back(*path);
        }
    }
    return files;
}

std::vector<WrittenFile> WrittenFiles(const Options& options) {
    std::vector<WrittenFile> files;
    if (!options.report.empty()) { // instead of an output
        files.push_back({options.report, "the report", options.overwrite});
    } else if (!options.IsToStandardOutput()) {
        files.push_back({options.output, "the output", options.overwrite});
    }
    if (!options.saveConfig.empty()) {
        files.push_back({options.saveConfig, "the saved configuration", options.overwrite});
    }
    if (!options.logDirectory.empty()) {
        files.push_back(
            {(fs::path(options.logDirectory) / MuxerSettings::kLogFileName).native(), "the trace log", true});
    }
    return files;
}

void CheckWritten(const WrittenFile& written, const std::vector<std::wstring>& readFiles) {
    for (const std::wstring& read : readFiles) {
        if (IsSameFile(read, written.path)) {
            throw Failure(Utf8FromWide(read) + ": is an input and cannot be " + written.purpose);
        }
    }
    std::error_code error;
    if (!written.mayExist && fs::exists(written.path, error)) {
        throw Failure(Utf8FromWide(written.path) + ": exists already (-y overwrites it)");
    }
}

// Whether some part would be that file: wherever digits in its name may be a part's number.
bool IsPart(const std::wstring& pattern, const std::wstring& file) {
    const std::wstring name = fs::path(file).filename().native();
    constexpr size_t kMaxDigits = 9;
    for (size_t begin = 0; begin < name.size(); ++begin) {
        UINT32 number = 0;
        for (size_t i = begin; i < name.size() && i < begin + kMaxDigits && name[i] >= L'0' && name[i] <= L'9'; ++i) {
            number = number * 10 + static_cast<UINT32>(name[i] - L'0');
            if (number > 0 && IsSameFile(file, PartName(pattern, number))) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

void CheckParts(const Options& options) {
    if (!options.split.IsOn()) {
        return;
    }
    for (const std::wstring& file : ReadFiles(options)) {
        if (IsPart(options.output, file)) {
            throw Failure(Utf8FromWide(file) + ": is an input and cannot be a part of the output");
        }
    }
    if (!options.saveConfig.empty() && IsPart(options.output, options.saveConfig)) {
        throw Failure(Utf8FromWide(options.saveConfig) +
                      ": is the saved configuration and cannot be a part of the output");
    }
}

void CheckWrittenFiles(const Options& options) {
    const std::vector<std::wstring> readFiles = ReadFiles(options);
    for (const WrittenFile& written : WrittenFiles(options)) {
        CheckWritten(written, readFiles);
    }
}

} // namespace mkvmux
