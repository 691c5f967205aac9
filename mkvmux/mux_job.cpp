#include "mkvmux/mux_job.h"

#include <set>
#include <utility>

#include "mkvmux/apply_chapters.h"
#include "mkvmux/apply_settings.h"
#include "mkvmux/display_choice.h"
#include "mkvmux/exit_status.h"
#include "mkvmux/failure.h"
#include "mkvmux/file_checks.h"
#include "mkvmux/graph_stopper.h"
#include "mkvmux/identify.h"
#include "mkvmux/index_room.h"
#include "mkvmux/input_guard.h"
#include "mkvmux/language_check.h"
#include "mkvmux/mux_graph.h"
#include "mkvmux/mux_run.h"
#include "mkvmux/muxer_loader.h"
#include "mkvmux/muxer_settings.h"
#include "mkvmux/profile_checks.h"
#include "mkvmux/progress_display.h"
#include "mkvmux/property_pages.h"
#include "mkvmux/run_figures.h"
#include "mkvmux/split_outputs.h"
#include "mkvmux/standard_output.h"
#include "mkvmux/text.h"

namespace mkvmux {

namespace {

void CheckInputs(const Options& options) {
    for (const InputOptions& input : options.inputs) {
        CheckInput(input.path);
    }
}

std::set<size_t> DisabledTracks(const Options& options) {
    std::set<size_t> disabled;
    for (const auto& [number, track] : options.tracks) {
        if (track.disable) {
            disabled.insert(number);
        }
    }
    return disabled;
}

// Before the inputs are connected: the log shall tell of that, and a bad configuration fails early.
void PrepareMuxer(const Options& options, MuxerSettings& settings) {
    if (!options.logDirectory.empty()) {
        settings.LogTo(options.logDirectory);
    }
    if (!options.loadConfig.empty()) {
        settings.LoadFrom(options.loadConfig);
    }
    if (options.webm) {
        settings.UseDocTypeWebm();
    }
    if (options.isProfileGiven || options.loadConfig.empty()) {
        settings.UseProfile(options.strict ? MuxProfile_Strict : MuxProfile_Compatible);
    }
    if (options.seed) {
        settings.UseSeed(*options.seed);
    }
    if (!options.trackStatistics) {
        settings.WriteNoStatistics();
    }
}

void SaveConfiguration(const Options& options, const MuxerSettings& settings, Interruption& interruption) {
    interruption.Enter(Interruption::Stage::Saving);
    settings.SaveTo(options.saveConfig, options.overwrite);
    interruption.Enter(Interruption::Stage::Preparing);
}

void Configure(const MuxGraph& graph, const Options& options, MuxerSettings& settings, Console& console) {
    ApplyTrackSettings(graph, options, settings, console);
    ApplyTitle(graph, options, settings, console);
    ApplyChapters(graph, options, settings, console);
    ApplyGlobalTags(graph, options, settings, console);
    CarryAttachments(graph, options, settings);
    AttachFiles(options, settings);
    if (options.cuesInFront) {
        settings.ReserveIndex(*options.cuesInFront ? IndexRoomFor(graph, options) : MuxReservedIndex{});
    }
    if (options.showProperties) {
        ShowPropertyPages(graph.Muxer().Get());
    }
    WarnOfOptionsWithoutEffect(options, settings, console);
    CheckLanguages(graph, settings, console);
}

void ListTracks(const MuxGraph& graph, const MuxerSettings& settings, const Console& console) {
    const auto list = [&](const SourceStream& stream, const char* remark) {
        console.Inform("track " + std::to_string(stream.number) + ": " + stream.Name() + ": " +
                       DescribeStream(stream, settings.IsStrict()) + remark + "\n");
    };
    for (size_t input = 0; input < graph.Streams().size(); ++input) {
        list(graph.Streams()[input], settings.IsEnabled(input) ? "" : " (disabled)");
    }
    for (const SourceStream& stream : graph.SkippedStreams()) {
        list(stream, " (skipped)");
    }
}

// From here on the output exists: whatever fails says what became of it.
void Run(const MuxGraph& graph, const Options& options, SplitOutputs& split, const Interruption& interruption,
         Console& console) {
    ProgressDisplay display = MakeDisplay(options);
    StatusDisplay status = MakeStatusDisplay(options);
    MuxRun run(graph, interruption, console, display, status);
    try {
        run.Start();
        run.Wait();
        run.Finish();
    } catch (const Failure& failure) {
        display.Finish();
        status.Finish();
        const std::wstring part = split.FailedPart();
        const Failure told(part.empty()
                               ? options.OutputName() + ": " + failure.what() + "; the file is unfinished"
                               : Utf8FromWide(part) + ": " + failure.what() + "; the parts before it are finished");
        if (!run.Stop()) {
            Console::Fail(told.what());
            LeaveAtOnce(kExitFailed);
        }
        throw told;
    }
    console.Inform(options.OutputName() + ": " + std::to_string(graph.Output().WrittenEnd()) + " bytes written\n");
    for (const SplitOutputs::Part& part : split.Parts()) {
        console.Inform(Utf8FromWide(part.path) + ": " + std::to_string(part.bytes) + " bytes written\n");
    }
    if (!run.Stop()) {
        console.Warn("an input's filter does not stop and is left as it is; the file is finished");
        LeaveAtOnce(kExitDoneWithWarnings);
    }
    if (options.verbose) {
        console.Inform(FiguresTable(ReadFigures(graph)));
    }
}

// Of what is written, before anything is opened. Standard output, where that is it, else nothing.
win::FileHandle CheckOutputs(const Options& options, const Options& asked) {
    win::FileHandle pipe;
    if (options.IsToStandardOutput()) {
        pipe = TakeStandardOutput();
    } else {
        CheckPlace(options.output);
    }
    CheckPlace(options.saveConfig);
    CheckWrittenFiles(options);
    CheckParts(asked);
    return pipe;
}

// As if that file alone had been asked for.
Options WithFirstPart(const Options& asked) {
    Options options = asked;
    if (asked.split.IsOn()) {
        options.output = PartName(asked.output, 1);
    }
    return options;
}

void OpenOutput(MuxGraph& graph, const Options& options, win::FileHandle pipe) {
    if (pipe) {
        graph.WriteTo(std::move(pipe));
    } else {
        graph.OpenOutput(options.output, options.overwrite);
    }
}

} // namespace

void Mux(const Options& asked, Interruption& interruption, Console& console) {
    const Options options = WithFirstPart(asked);
    CheckInputs(options);
    win::FileHandle pipe = CheckOutputs(options, asked);
    MuxerLoader loader; // before all that comes from its module
    MuxGraph graph(loader.Create(options.noRegister ? MuxerSource::BesideProgram : MuxerSource::Registry));
    MuxerSettings settings(graph.Muxer());
    PrepareMuxer(options, settings);
    graph.UseFrameRate(options.frameRate);
    graph.UseProfile(settings.IsStrict());
    for (const InputOptions& input : options.inputs) {
        graph.AddInput(input.path, DisabledTracks(options));
        interruption.Check();
    }
    Configure(graph, options, settings, console);
    if (!options.saveConfig.empty()) {
        SaveConfiguration(options, settings, interruption); // with what was set in the property pages
    }
    ListTracks(graph, settings, console);
    CheckWebmSubset(graph, settings);
    interruption.Enter(Interruption::Stage::Running);
    OpenOutput(graph, options, std::move(pipe));
    SplitOutputs split(asked, graph.Muxer());
    split.Begin(graph.Output());
    Run(graph, options, split, interruption, console);
}

} // namespace mkvmux
