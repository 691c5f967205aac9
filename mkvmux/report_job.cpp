#include "mkvmux/report_job.h"

#include <filesystem>
#include <memory>

#include "mkvmux/display_choice.h"
#include "mkvmux/failure.h"
#include "mkvmux/file_checks.h"
#include "mkvmux/input_guard.h"
#include "mkvmux/temporary_name.h"
#include "mkvmux/text.h"
#include "report/file_survey.h"
#include "report/page.h"
#include "sources/base/buffered_source.h"
#include "sources/base/file_source.h"
#include "win/temporary_file.h"

namespace mkvmux {

namespace {

std::unique_ptr<source::ByteSource> Open(const std::wstring& path) {
    auto file = std::make_unique<source::FileSource>();
    if (const HRESULT hr = file->Open(path); FAILED(hr)) {
        throw Failure(Utf8FromWide(path) + ": cannot be opened: " + DescribeFileError(path, hr));
    }
    return std::make_unique<source::BufferedSource>(std::move(file));
}

report::FileFacts Survey(const std::wstring& path, const Options& options, const Interruption& interruption) {
    const std::unique_ptr<source::ByteSource> source = Open(path);
    ProgressDisplay display = MakeDisplay(options);
    try {
        report::FileFacts facts =
            report::FileSurvey(*source, [&](UINT64 done, UINT64 all) {
                interruption.Check();
                display.Show(static_cast<int>(static_cast<double>(done) / static_cast<double>(all) * kWholePercent));
            }).Read();
        display.Finish();
        return facts;
    } catch (const report::NoMatroskaFile& failure) {
        throw Failure(Utf8FromWide(path) + ": has no report: " + failure.what());
    }
}

bool Write(HANDLE file, const std::string& page) {
    constexpr size_t kStepBytes = size_t{1} << 20;
    for (size_t done = 0; done < page.size();) {
        DWORD written = 0;
        const auto wanted = static_cast<DWORD>(std::min(kStepBytes, page.size() - done));
        if (WriteFile(file, page.data() + done, wanted, &written, nullptr) == FALSE || written == 0) {
            return false;
        }
        done += written;
    }
    return true;
}

// All of it or nothing.
void Save(const std::string& page, const std::wstring& path, bool overwrite) {
    win::TemporaryFile unfinished(NewTemporaryName);
    if (!unfinished.Create(win::FolderOf(path), GENERIC_WRITE, FILE_ATTRIBUTE_NORMAL)) {
        const HRESULT hr = LastResult();
        throw Failure(Utf8FromWide(path) + ": cannot be created: " + DescribeFileError(path, hr));
    }
    if (!Write(unfinished.Get(), page) || !(overwrite ? unfinished.MoveTo(path) : unfinished.MoveToFreePath(path))) {
        throw Failure(Utf8FromWide(path) + ": cannot be written: " + DescribeResult(LastResult()));
    }
}

} // namespace

void Report(const Options& options, Interruption& interruption, Console& console) {
    const std::wstring& input = options.inputs.front().path;
    CheckInput(input);
    CheckPlace(options.report);
    CheckWrittenFiles(options);
    const report::FileFacts facts = Survey(input, options, interruption);
    const std::string page = report::PageOf(facts, Utf8FromWide(std::filesystem::path(input).filename().native()));
    interruption.Enter(Interruption::Stage::Saving);
    Save(page, options.report, options.overwrite);
    interruption.Enter(Interruption::Stage::Preparing);
    if (facts.damageCount > 0) {
        console.Warn(Utf8FromWide(input) + ": is damaged from byte " + std::to_string(facts.damages.front().from) +
                     " on: " + facts.damages.front().what);
    }
    console.Inform(Utf8FromWide(options.report) + ": written\n");
}

} // namespace mkvmux
