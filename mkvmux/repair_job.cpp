#include "mkvmux/repair_job.h"

#include <cinttypes>
#include <cstdio>

#include "mkvmux/display_choice.h"
#include "mkvmux/failure.h"
#include "mkvmux/file_checks.h"
#include "mkvmux/file_stream.h"
#include "mkvmux/text.h"
#include "repair/finish_recording.h"
#include "repair/refusal.h"
#include "win/com_ptr.h"

namespace mkvmux {

namespace {

using FilePtr = win::ComPtr<CFileStream>;

// Nobody may write meanwhile, a muxer that still records least of all.
FilePtr OpenForRepair(const std::wstring& path) {
    win::FileHandle file(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        throw Failure(Utf8FromWide(path) + ": cannot be opened for writing: " + DescribeFileError(path, LastResult()));
    }
    FilePtr stream(new CFileStream(nullptr));
    stream->Take(std::move(file), path);
    return stream;
}

repair::Recording Survey(CFileStream& stream, const Options& options, const Interruption& interruption) {
    ProgressDisplay display = MakeDisplay(options);
    repair::Recording recording = repair::SurveyRecording(stream, [&](UINT64 done, UINT64 all) {
        interruption.Check();
        display.Show(static_cast<int>(static_cast<double>(done) / static_cast<double>(all) * kWholePercent));
    });
    display.Finish();
    return recording;
}

std::string Count(UINT64 number, const char* what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string ClockTime(UINT64 ns) {
    constexpr UINT64 kNsInMs = 1000000;
    constexpr UINT64 kMsInSecond = 1000;
    constexpr UINT64 kSecondsInMinute = 60;
    constexpr UINT64 kMinutesInHour = 60;
    const UINT64 ms = ns / kNsInMs;
    const UINT64 seconds = ms / kMsInSecond;
    const UINT64 minutes = seconds / kSecondsInMinute;
    char text[48];
    std::snprintf(text, sizeof(text), "%02" PRIu64 ":%02" PRIu64 ":%02" PRIu64 ".%03" PRIu64,
                  static_cast<uint64_t>(minutes / kMinutesInHour), static_cast<uint64_t>(minutes % kMinutesInHour),
                  static_cast<uint64_t>(seconds % kSecondsInMinute), static_cast<uint64_t>(ms % kMsInSecond));
    return text;
}

std::string Describe(const repair::Recording& recording) {
    if (recording.isFinished) {
        return "is whole already; nothing is changed";
    }
    return "repaired: " + ClockTime(recording.cut.endNs) + " in " + Count(recording.clusters, "cluster") + ", " +
           Count(recording.cut.cuePoints.size(), "cue point") + "; " +
           Count(recording.fileBytes - recording.cut.end, "torn byte") + " cut off";
}

void Finish(CFileStream& stream, const repair::Recording& recording, const std::string& name) {
    const auto fail = [&name](HRESULT hr) {
        throw Failure(name + ": cannot be written: " + DescribeResult(hr) +
                      "; what was recorded is there, and the repair can be tried again");
    };
    try {
        repair::FinishRecording(stream, recording);
    } catch (const repair::WriteFailure& failure) {
        fail(failure.hr);
    }
    if (FAILED(stream.FirstFailure())) {
        fail(stream.FirstFailure());
    }
}

} // namespace

void Repair(const Options& options, Interruption& interruption, Console& console) {
    const std::string name = Utf8FromWide(options.repair);
    CheckInput(options.repair);
    const FilePtr stream = OpenForRepair(options.repair);
    try {
        const repair::Recording recording = Survey(*stream.Get(), options, interruption);
        interruption.Enter(Interruption::Stage::Saving);
        Finish(*stream.Get(), recording, name);
        console.Inform(name + ": " + Describe(recording) + "\n");
    } catch (const repair::Refusal& refusal) {
        throw Failure(name + ": cannot be repaired: " + refusal.what());
    }
}

} // namespace mkvmux
