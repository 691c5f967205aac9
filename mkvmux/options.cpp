#include "mkvmux/options.h"

#include <algorithm>
#include <cwctype>
#include <map>

#include "mkvmux/exit_status.h"
#include "mkvmux/failure.h"
#include "mkvmux/language_choice.h"
#include "mkvmux/option_kinds.h"
#include "mkvmux/options_file.h"
#include "mkvmux/same_file.h"
#include "mkvmux/text.h"
#include "records/file_options.h"

namespace mkvmux {

namespace {

const std::map<std::string, ProgressMode> kProgressModes{
    {"auto", ProgressMode::Auto}, {"always", ProgressMode::Always}, {"never", ProgressMode::Never}};

const std::map<std::string, bool> kCuesInFront{{"front", true}, {"end", false}};

const std::map<std::string, bool> kProfiles{{"strict", true}, {"compatible", false}};

// As many as the muxer takes.
constexpr UINT64 kMaxIndexBytes = records::kMaxIndexBytes;

// The texts as the parser stores them; it knows UTF-8 alone.
struct RawOptions {
    std::string output;
    std::string repair;
    std::string report;
    std::string logDirectory;
    std::string saveConfig;
    std::string loadConfig;
    std::string frameRate;
    std::string progress = "auto";
    std::string profile = "strict";
    std::vector<std::string> inputs;
    std::string title;
    std::string seed;
    std::string split;
    bool noStatistics = false;
    std::string cues;
    std::optional<UINT64> indexBytes;
    bool listLanguages = false;
};

void DescribeOutput(CLI::App& app, Options& options, RawOptions& raw) {
    app.add_option("-o,--output", raw.output,
                   "the file to write; a name that ends in .webm implies --webm; - is standard output")
        ->type_name("FILE")
        ->check(NoOptionButDash());
    app.add_flag("-y,--yes", options.overwrite, "overwrite what exists");
    app.add_flag("--webm", options.webm, "write the document type webm");
    app.add_option("--profile", raw.profile,
                   "how the file is written: strict, as the format's standards ask, or compatible, as this muxer has "
                   "always written (default " +
                       raw.profile + ")")
        ->type_name("PROFILE");
    app.add_option("--title", raw.title, "the title of the file; an empty one removes that of the inputs")
        ->type_name("TEXT")
        ->check(NoOptionOf(app));
    app.add_option("--deterministic", raw.seed,
                   "take identifiers and date from this text, so that the same inputs make the same file")
        ->type_name("SEED")
        ->check(NoOptionOf(app));
    app.add_option(
           "--split", raw.split,
           "begin another file at a keyframe: duration:TIME, size:SIZE or timestamps:TIME,TIME... (00:10:00, 90s, "
           "700M); the files are called FILE-001, FILE-002, or as a %d or %03d of FILE says")
        ->type_name("WHERE")
        ->check(NoOption());
    app.add_flag("--disable-track-statistics-tags", raw.noStatistics, "write no statistics of the tracks");
    app.add_option(
           "--cues", raw.cues,
           "where the index stands: end, or front, so that players seek over a network without reading the end; "
           "front keeps room for as long as the inputs say that they are (default end)")
        ->type_name("WHERE");
    app.add_option("--reserve-index-space", raw.indexBytes, "keep so many bytes for --cues front, which it implies")
        ->type_name("BYTES")
        ->check(CLI::Range(UINT64{1}, kMaxIndexBytes));
    app.add_option("INPUT", raw.inputs,
                   "the files whose streams go into the output; @FILE reads arguments from a "
                   "JSON array of strings")
        ->type_name("FILE...");
    app.add_option("--fps", raw.frameRate,
                   "pictures a second of raw H.264, H.265 and AV1 inputs, such as 25, 29.97 or 30000/1001 (default 25)")
        ->type_name("RATE");
}

void DescribeRun(CLI::App& app, Options& options, RawOptions& raw) {
    app.option_defaults()->group("Other");
    app.add_flag("--identify", options.identify, "list the streams of the inputs and write nothing");
    app.add_flag("--json", options.json, "make --identify answer in JSON");
    app.add_option("--repair", raw.repair, "finish a recording that was cut off, in the file itself")
        ->type_name("FILE")
        ->check(NoOption());
    app.add_option("--report", raw.report, "write a page about the one input, a Matroska or WebM file of any writer")
        ->type_name("FILE.html")
        ->check(NoOption());
    app.add_flag("--list-languages", raw.listLanguages, "list the languages with their codes");
    app.add_option("--load-config", raw.loadConfig, "begin with the settings and attachments of this file")
        ->type_name("FILE")
        ->check(NoOption());
    app.add_option("--save-config", raw.saveConfig, "save the muxer's settings and attachments for --load-config")
        ->type_name("FILE")
        ->check(NoOption());
    app.add_option("--log", raw.logDirectory, "write the muxer's trace log into this directory")
        ->type_name("DIR")
        ->check(NoOption());
    app.add_flag("--properties", options.showProperties, "show the muxer's property pages before running");
    app.add_flag("--no-register", options.noRegister,
                 "load QRX_MKVMuxer.ax from beside the program instead of the registered one");
    app.add_flag("-q,--quiet", options.quiet, "print warnings and errors only");
    app.add_flag("-v,--verbose", options.verbose,
                 "show what the muxer does while it runs, and a table of it at the end");
    app.add_option("--progress", raw.progress, "show the progress: auto, always or never")->type_name("WHEN");
}

void DescribeProgram(CLI::App& app, const std::string& version) {
    app.name("mkvmux");
    // A leading slash begins a path, on Windows too.
    app.allow_windows_style_options(false);
    app.set_version_flag("--version", "mkvmux " + version);
}

bool EndsInWebm(std::wstring_view path) {
    constexpr std::wstring_view kExtension = L".webm";
    if (path.size() < kExtension.size()) {
        return false;
    }
    const std::wstring_view end = path.substr(path.size() - kExtension.size());
    return std::equal(end.begin(), end.end(), kExtension.begin(),
                      [](WCHAR a, WCHAR b) { return std::towlower(static_cast<wint_t>(a)) == static_cast<wint_t>(b); });
}

ProgressMode ReadProgressMode(const std::string& text) {
    const auto mode = kProgressModes.find(text);
    if (mode == kProgressModes.end()) {
        throw Failure("--progress: '" + text + "' is not auto, always or never");
    }
    return mode->second;
}

bool ReadIsStrict(const std::string& text) {
    const auto profile = kProfiles.find(text);
    if (profile == kProfiles.end()) {
        throw Failure("--profile: '" + text + "' is not strict or compatible");
    }
    return profile->second;
}

bool ReadCuesInFront(const std::string& text) {
    const auto place = kCuesInFront.find(text);
    if (place == kCuesInFront.end()) {
        throw Failure("--cues: '" + text + "' is not front or end");
    }
    return place->second;
}

// FNV-1a of 64 bits; 0 stands for no seed.
UINT64 SeedOf(const std::string& text) {
    constexpr UINT64 kOffsetBasis = 0xCBF29CE484222325;
    constexpr UINT64 kPrime = 0x100000001B3;
    UINT64 hash = kOffsetBasis;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * kPrime;
    }
    return hash == 0 ? 1 : hash;
}

void CompleteWhatStrictWrites(Options& options, const RawOptions& raw, const CLI::App& app) {
    options.strict = ReadIsStrict(raw.profile);
    options.isProfileGiven = app.count("--profile") > 0;
    if (app.count("--title") > 0) {
        options.title = WideFromUtf8(raw.title);
    }
    if (app.count("--deterministic") > 0) {
        options.seed = SeedOf(raw.seed);
    }
    options.trackStatistics = !raw.noStatistics;
    options.indexBytes = raw.indexBytes;
    if (app.count("--cues") > 0) {
        options.cuesInFront = ReadCuesInFront(raw.cues);
    } else if (raw.indexBytes) {
        options.cuesInFront = true;
    }
}

void Complete(Options& options, const RawOptions& raw) {
    options.output = WideFromUtf8(raw.output);
    options.repair = WideFromUtf8(raw.repair);
    options.report = WideFromUtf8(raw.report);
    options.webm = options.webm || EndsInWebm(options.output);
    options.logDirectory = WideFromUtf8(raw.logDirectory);
    options.saveConfig = WideFromUtf8(raw.saveConfig);
    options.loadConfig = WideFromUtf8(raw.loadConfig);
    if (!raw.frameRate.empty()) {
        const std::optional<annexb::FrameRate> rate = annexb::ParseFrameRate(raw.frameRate);
        if (!rate) {
            throw Failure("--fps: '" + raw.frameRate + "' is no number of pictures a second");
        }
        options.frameRate = *rate;
    }
    options.progress = ReadProgressMode(raw.progress);
    options.split = ReadSplit(raw.split);
    for (const std::string& input : raw.inputs) {
        options.inputs.push_back({WideFromUtf8(input)});
    }
}

// What the parser cannot know: which options need which others. Empty when all is well.
std::string Contradiction(const Options& options) {
    if (options.quiet && options.verbose) {
        return "--quiet and --verbose exclude each other";
    }
    if (!options.report.empty()) {
        const bool isAlone = options.inputs.size() == 1 && options.output.empty() && options.repair.empty();
        return isAlone && !options.identify ? ""
                                            : "--report goes with one input, and without --output, --identify and "
                                              "--repair";
    }
    if (!options.repair.empty()) {
        const bool isAlone = options.inputs.empty() && options.output.empty() && !options.identify;
        return isAlone ? "" : "--repair goes without inputs, --output and --identify";
    }
    if (options.inputs.empty()) {
        return "no input is given";
    }
    if (!options.identify && options.output.empty()) {
        return "no output is given (-o FILE)";
    }
    if (options.cuesInFront.value_or(false) && options.IsToStandardOutput()) {
        return "--cues front goes with a file: nobody goes back in standard output";
    }
    if (options.indexBytes && !*options.cuesInFront) {
        return "--cues end and --reserve-index-space exclude each other";
    }
    if (options.split.IsOn() && options.IsToStandardOutput()) {
        return "--split goes with files, not with standard output";
    }
    if (options.json && !options.identify) {
        return "--json goes with --identify only";
    }
    if (!options.saveConfig.empty() && !options.IsToStandardOutput() &&
        IsSameFile(options.saveConfig, options.output)) {
        return "--save-config and --output name the same file";
    }
    return {};
}

EarlyExit Refuse(const std::string& reason) {
    return {kExitFailed, reason + "; see mkvmux --help"};
}

std::variant<Options, EarlyExit> Parse(const std::vector<std::string>& arguments, const std::string& version) {
    Options options;
    RawOptions raw;
    CLI::App app{"Multiplexes the streams of media files into one Matroska or WebM file."};
    DescribeProgram(app, version);
    // The help has them in this order.
    DescribeOutput(app, options, raw);
    TrackOptionParser tracks(app); // what the parser is to fill, as raw is
    AttachmentOptionParser attachments(app);
    ChapterOptionParser chapters(app);
    DescribeRun(app, options, raw);
    try {
        options.optionsFiles = OptionsFilesOf(arguments);
        std::vector<std::string> expanded = ExpandOptionsFiles(arguments);
        // The parser takes the arguments from the back.
        std::reverse(expanded.begin(), expanded.end());
        app.parse(std::move(expanded));
    } catch (const CLI::CallForHelp&) {
        return EarlyExit{kExitDone, app.help()};
    } catch (const CLI::CallForVersion& versionCall) {
        return EarlyExit{kExitDone, std::string(versionCall.what()) + "\n"};
    } catch (const CLI::ParseError& error) {
        return Refuse(error.what());
    }
    if (raw.listLanguages) {
        return EarlyExit{kExitDone, ListLanguages()};
    }
    options.tracks = tracks.Read();
    Complete(options, raw);
    CompleteWhatStrictWrites(options, raw, app);
    options.attachments = attachments.Read();
    options.chapters = chapters.Read();
    if (const std::string reason = Contradiction(options); !reason.empty()) {
        return Refuse(reason);
    }
    return options;
}

} // namespace

std::string Options::OutputName() const {
    return IsToStandardOutput() ? kStandardOutputName : Utf8FromWide(output);
}

std::variant<Options, EarlyExit> ParseOptions(const std::vector<std::string>& arguments, const std::string& version) {
    try {
        return Parse(arguments, version);
    } catch (const Failure& failure) {
        return EarlyExit{kExitFailed, failure.what()};
    }
}

} // namespace mkvmux
