#include "tools/mkvmux/mux_job.h"

#include <filesystem>

#include "tools/mkvmux/failure.h"
#include "tools/mkvmux/identify.h"
#include "tools/mkvmux/interruption.h"
#include "tools/mkvmux/mux_graph.h"
#include "tools/mkvmux/mux_run.h"
#include "tools/mkvmux/muxer_loader.h"
#include "tools/mkvmux/progress_display.h"
#include "tools/mkvmux/text.h"

namespace mkvmux {

namespace {

namespace fs = std::filesystem;

void CheckInputs(const Options& options) {
    for (const InputOptions& input : options.inputs) {
        const DWORD attributes = GetFileAttributesW(input.path.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES) {
            throw Failure(Utf8FromWide(input.path) +
                          ": cannot be opened: " + DescribeResult(HRESULT_FROM_WIN32(GetLastError())));
        }
        if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            throw Failure(Utf8FromWide(input.path) + ": is a directory");
        }
    }
}

// An input that is also the output would be gone before it is read.
void CheckOutput(const Options& options) {
    std::error_code error;
    if (!fs::exists(options.output, error)) {
        return;
    }
    for (const InputOptions& input : options.inputs) {
        if (fs::equivalent(input.path, options.output, error)) {
            throw Failure(Utf8FromWide(options.output) + ": is an input and cannot be the output");
        }
    }
    if (!options.overwrite) {
        throw Failure(Utf8FromWide(options.output) + ": exists already (-y overwrites it)");
    }
}

ProgressDisplay MakeDisplay(const Options& options) {
    using Style = ProgressDisplay::Style;
    Style style = Console::IsTerminal() ? Style::Bar : Style::Lines;
    if (options.progress == ProgressMode::Never || (options.progress == ProgressMode::Auto && options.quiet)) {
        style = Style::None;
    }
    return ProgressDisplay(style, Console::TerminalColumns(), Console::Print);
}

void ListTracks(const MuxGraph& graph, const Console& console) {
    size_t number = 0;
    for (const SourceStream& stream : graph.Streams()) {
        console.Inform("track " + std::to_string(number++) + ": " + stream.Name() + ": " + DescribeStream(stream) +
                       "\n");
    }
}

// From here on the output exists: whatever fails says what became of it.
void Run(const MuxGraph& graph, const Options& options, const Interruption& interruption, Console& console) {
    ProgressDisplay display = MakeDisplay(options);
    MuxRun run(graph, interruption, console, display);
    try {
        run.Start();
        run.Wait();
        run.Finish();
    } catch (const Failure& failure) {
        display.Finish();
        throw Failure(Utf8FromWide(options.output) + ": " + failure.what() + "; the file is unfinished");
    }
    console.Inform(Utf8FromWide(options.output) + ": " + std::to_string(graph.Output().WrittenEnd()) +
                   " bytes written\n");
}

} // namespace

void Mux(const Options& options, Console& console) {
    CheckInputs(options);
    CheckOutput(options);
    MuxerLoader loader; // before all that comes from its module
    MuxGraph graph(loader.Create(options.noRegister ? MuxerSource::BesideProgram : MuxerSource::Registry));
    if (options.webm) {
        graph.UseDocTypeWebm();
    }
    for (const InputOptions& input : options.inputs) {
        graph.AddInput(input.path);
    }
    ListTracks(graph, console);
    const Interruption interruption;
    graph.OpenOutput(options.output, options.overwrite);
    Run(graph, options, interruption, console);
}

} // namespace mkvmux
