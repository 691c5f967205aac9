#include "tools/mkvmux/options.h"

#include <algorithm>
#include <cwctype>
#include <map>

#include <CLI/CLI.hpp>

#include "tools/mkvmux/exit_status.h"
#include "tools/mkvmux/text.h"

namespace mkvmux {

namespace {

const std::map<std::string, ProgressMode> kProgressModes{
    {"auto", ProgressMode::Auto}, {"always", ProgressMode::Always}, {"never", ProgressMode::Never}};

// The texts as the parser stores them; it knows UTF-8 alone.
struct RawOptions {
    std::string output;
    std::vector<std::string> inputs;
};

void Describe(CLI::App& app, Options& options, RawOptions& raw, const std::string& version) {
    app.name("mkvmux");
    // A leading slash begins a path, on Windows too.
    app.allow_windows_style_options(false);
    app.set_version_flag("--version", "mkvmux " + version);
    app.add_option("-o,--output", raw.output, "the file to write; a name that ends in .webm implies --webm")
        ->type_name("FILE");
    app.add_flag("-y,--yes", options.overwrite, "overwrite the output if it exists");
    app.add_flag("--webm", options.webm, "write the document type webm");
    app.add_flag("--identify", options.identify, "list the streams of the inputs and write nothing");
    app.add_flag("--no-register", options.noRegister,
                 "load QRX_MKVMuxer.ax from beside the program instead of the registered one");
    app.add_flag("-q,--quiet", options.quiet, "print warnings and errors only");
    app.add_option("--progress", options.progress, "show the progress: auto, always or never")
        ->type_name("WHEN")
        ->transform(CLI::CheckedTransformer(kProgressModes).description(""));
    app.add_option("INPUT", raw.inputs, "the files whose streams go into the output")->type_name("FILE...");
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

void Complete(Options& options, const RawOptions& raw) {
    options.output = WideFromUtf8(raw.output);
    options.webm = options.webm || EndsInWebm(options.output);
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
    return {};
}

EarlyExit Refuse(const std::string& reason) {
    return {kExitFailed, reason + "; see mkvmux --help"};
}

} // namespace

std::variant<Options, EarlyExit> ParseOptions(std::vector<std::string> arguments, const std::string& version) {
    Options options;
    RawOptions raw;
    CLI::App app{"Multiplexes the streams of media files into one Matroska or WebM file."};
    Describe(app, options, raw, version);
    // The parser takes the arguments from the back.
    std::reverse(arguments.begin(), arguments.end());
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::CallForHelp&) {
        return EarlyExit{kExitDone, app.help()};
    } catch (const CLI::CallForVersion& versionCall) {
        return EarlyExit{kExitDone, std::string(versionCall.what()) + "\n"};
    } catch (const CLI::ParseError& error) {
        return Refuse(error.what());
    }
    Complete(options, raw);
    if (const std::string reason = Contradiction(options); !reason.empty()) {
        return Refuse(reason);
    }
    return options;
}

} // namespace mkvmux
