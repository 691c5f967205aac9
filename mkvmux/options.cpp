#include "mkvmux/options.h"

#include <algorithm>
#include <cwctype>
#include <map>

#include <CLI/CLI.hpp>

#include "mkvmux/exit_status.h"
#include "mkvmux/failure.h"
#include "mkvmux/language_choice.h"
#include "mkvmux/options_file.h"
#include "mkvmux/same_file.h"
#include "mkvmux/text.h"
#include "mkvmux/track_option_text.h"

namespace mkvmux {

namespace {

const std::map<std::string, ProgressMode> kProgressModes{
    {"auto", ProgressMode::Auto}, {"always", ProgressMode::Always}, {"never", ProgressMode::Never}};

// The texts as the parser stores them; it knows UTF-8 alone.
struct RawOptions {
    std::string output;
    std::string logDirectory;
    std::string saveConfig;
    std::string loadConfig;
    std::string frameRate;
    std::string progress = "auto";
    RawTrackOptions tracks;
    std::vector<std::string> attached;
    std::vector<std::string> mimeTypes;
    std::vector<std::string> attachmentNames;
    std::vector<std::string> descriptions;
    std::vector<std::string> inputs;
    bool listLanguages = false;
};

// The options whose order on the command line counts: what describes an attachment stands before it.
struct AttachmentArguments {
    CLI::Option* attach = nullptr;
    CLI::Option* mimeType = nullptr;
    CLI::Option* name = nullptr;
    CLI::Option* description = nullptr;
};

// A file that was forgotten makes the next option its name.
CLI::Validator NoOption() {
    const auto check = [](const std::string& value) {
        return value.starts_with('-') ? "'" + value + "' looks like an option; './" + value + "' names a file"
                                      : std::string();
    };
    return CLI::Validator(check, "");
}

// Texts may begin with anything, but are no options of the program.
CLI::Validator NoOptionOf(const CLI::App& app) {
    const auto check = [&app](const std::string& value) {
        const bool isOption = value.starts_with('-') && app.get_option_no_throw(value) != nullptr;
        return isOption ? "'" + value + "' is an option" : std::string();
    };
    return CLI::Validator(check, "");
}

// An option that can be given several times, with one value each time.
CLI::Option* AddRepeatable(CLI::App& app, const char* name, std::vector<std::string>& values, const char* help,
                           const char* type) {
    return app.add_option(name, values, help)->type_name(type)->allow_extra_args(false);
}

void DescribeOutput(CLI::App& app, Options& options, RawOptions& raw) {
    app.add_option("-o,--output", raw.output, "the file to write; a name that ends in .webm implies --webm")
        ->type_name("FILE")
        ->check(NoOption());
    app.add_flag("-y,--yes", options.overwrite, "overwrite what exists");
    app.add_flag("--webm", options.webm, "write the document type webm");
    app.add_option("INPUT", raw.inputs,
                   "the files whose streams go into the output; @FILE reads arguments from a "
                   "JSON array of strings")
        ->type_name("FILE...");
    app.add_option("--fps", raw.frameRate,
                   "pictures a second of raw H.264 and H.265 inputs, such as 25, 29.97 or 30000/1001 (default 25)")
        ->type_name("RATE");
}

void DescribeTracks(CLI::App& app, RawTrackOptions& raw) {
    app.option_defaults()->group("Tracks, counted over all inputs from 0");
    AddRepeatable(app, "--track-name", raw.names, "the name of track T; an empty one removes it", "T:NAME");
    AddRepeatable(app, "--language", raw.languages, "the language of track T: its English name or its ISO 639 code",
                  "T:NAME");
    AddRepeatable(app, "--default", raw.defaults, "set the default flag of track T", "T");
    AddRepeatable(app, "--disable", raw.disabled, "do not write track T", "T");
}

AttachmentArguments DescribeAttachments(CLI::App& app, RawOptions& raw) {
    app.option_defaults()->group("Attachments");
    AttachmentArguments arguments;
    arguments.attach = AddRepeatable(app, "--attach", raw.attached, "attach this file to the output", "FILE");
    arguments.attach->check(NoOption());
    arguments.mimeType =
        AddRepeatable(app, "--attach-mime", raw.mimeTypes,
                      "the MIME type of the next attachment; without it the extension decides", "TYPE");
    arguments.name = AddRepeatable(app, "--attach-name", raw.attachmentNames,
                                   "the name of the next attachment in the output", "NAME");
    arguments.description =
        AddRepeatable(app, "--attach-description", raw.descriptions, "describe the next attachment", "TEXT");
    for (CLI::Option* const text : {arguments.mimeType, arguments.name, arguments.description}) {
        text->check(NoOptionOf(app));
    }
    return arguments;
}

void DescribeRun(CLI::App& app, Options& options, RawOptions& raw) {
    app.option_defaults()->group("Other");
    app.add_flag("--identify", options.identify, "list the streams of the inputs and write nothing");
    app.add_flag("--json", options.json, "make --identify answer in JSON");
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
    app.add_option("--progress", raw.progress, "show the progress: auto, always or never")->type_name("WHEN");
}

AttachmentArguments Describe(CLI::App& app, Options& options, RawOptions& raw, const std::string& version) {
    app.name("mkvmux");
    // A leading slash begins a path, on Windows too.
    app.allow_windows_style_options(false);
    app.set_version_flag("--version", "mkvmux " + version);
    DescribeOutput(app, options, raw);
    DescribeTracks(app, raw.tracks);
    const AttachmentArguments attachments = DescribeAttachments(app, raw);
    DescribeRun(app, options, raw);
    return attachments;
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

// Goes through the options as they were given; each option's values are its own in that order.
std::vector<AttachmentOptions> ReadAttachments(const CLI::App& app, const AttachmentArguments& arguments) {
    std::vector<AttachmentOptions> attachments;
    AttachmentOptions next;
    std::map<const CLI::Option*, size_t> used;
    const char* unattached = nullptr;
    for (const CLI::Option* const option : app.parse_order()) {
        const auto value = [&] { return option->results().at(used[option]++); };
        if (option == arguments.mimeType) {
            next.mimeType = value();
            unattached = "--attach-mime";
        } else if (option == arguments.name) {
            next.name = WideFromUtf8(value());
            unattached = "--attach-name";
        } else if (option == arguments.description) {
            next.description = WideFromUtf8(value());
            unattached = "--attach-description";
        } else if (option == arguments.attach) {
            next.path = WideFromUtf8(value());
            attachments.push_back(std::exchange(next, {}));
            unattached = nullptr;
        }
    }
    if (unattached != nullptr) {
        throw Failure(std::string(unattached) + ": speaks of the next attachment, and no --attach follows");
    }
    return attachments;
}

ProgressMode ReadProgressMode(const std::string& text) {
    const auto mode = kProgressModes.find(text);
    if (mode == kProgressModes.end()) {
        throw Failure("--progress: '" + text + "' is not auto, always or never");
    }
    return mode->second;
}

void Complete(Options& options, const RawOptions& raw) {
    options.output = WideFromUtf8(raw.output);
    options.webm = options.webm || EndsInWebm(options.output);
    options.logDirectory = WideFromUtf8(raw.logDirectory);
    options.saveConfig = WideFromUtf8(raw.saveConfig);
    options.loadConfig = WideFromUtf8(raw.loadConfig);
    options.tracks = ReadTrackOptions(raw.tracks);
    if (!raw.frameRate.empty()) {
        const std::optional<annexb::FrameRate> rate = annexb::ParseFrameRate(raw.frameRate);
        if (!rate) {
            throw Failure("--fps: '" + raw.frameRate + "' is no number of pictures a second");
        }
        options.frameRate = *rate;
    }
    options.progress = ReadProgressMode(raw.progress);
    for (const std::string& input : raw.inputs) {
        options.inputs.push_back({WideFromUtf8(input)});
    }
}

// What the parser cannot know: which options need which others. Empty when all is well.
std::string Contradiction(const Options& options) {
    if (options.inputs.empty()) {
        return "no input is given";
    }
    if (!options.identify && options.output.empty()) {
        return "no output is given (-o FILE)";
    }
    if (options.json && !options.identify) {
        return "--json goes with --identify only";
    }
    if (!options.saveConfig.empty() && IsSameFile(options.saveConfig, options.output)) {
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
    const AttachmentArguments attachments = Describe(app, options, raw, version);
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
    Complete(options, raw);
    options.attachments = ReadAttachments(app, attachments);
    if (const std::string reason = Contradiction(options); !reason.empty()) {
        return Refuse(reason);
    }
    return options;
}

} // namespace

std::variant<Options, EarlyExit> ParseOptions(const std::vector<std::string>& arguments, const std::string& version) {
    try {
        return Parse(arguments, version);
    } catch (const Failure& failure) {
        return EarlyExit{kExitFailed, failure.what()};
    }
}

} // namespace mkvmux
