// mkvmux: multiplexes the streams of media files into one Matroska or WebM file with the muxer filter.
#include <exception>
#include <string>
#include <variant>
#include <vector>

#include "mkvmux/console.h"
#include "mkvmux/exit_status.h"
#include "mkvmux/failure.h"
#include "mkvmux/identify.h"
#include "mkvmux/interruption.h"
#include "mkvmux/mux_job.h"
#include "mkvmux/options.h"
#include "mkvmux/repair_job.h"
#include "mkvmux/report_job.h"
#include "mkvmux/text.h"
#include "win/com_apartment.h"
#include "win/platform.h"

namespace {

using namespace mkvmux;

int Follow(const Options& options, Interruption& interruption) {
    Console console(options.quiet);
    // Multithreaded, since nobody here pumps messages.
    const win::ComApartment apartment(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    if (FAILED(apartment.Entered())) {
        throw Failure("COM cannot be initialised: " + DescribeResult(apartment.Entered()));
    }
    if (!options.repair.empty()) {
        Repair(options, interruption, console);
    } else if (!options.report.empty()) {
        Report(options, interruption, console);
    } else if (options.identify) {
        const std::string identified = Identify(options);
        interruption.Check();
        Console::Print(identified);
    } else {
        Mux(options, interruption, console);
    }
    return console.HasWarned() ? kExitDoneWithWarnings : kExitDone;
}

int Leave(const EarlyExit& exit) {
    exit.status == kExitDone ? Console::Print(exit.output) : Console::Fail(exit.output);
    return exit.status;
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    // What lies beside the program or in the current folder is not the system's, whatever its name.
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    try {
        Interruption interruption; // before all else: an interruption that nobody watches may look like success
        std::vector<std::string> utf8;
        for (int i = 1; i < count; ++i) {
            utf8.push_back(Utf8FromWide(arguments[i]));
        }
        const auto parsed = ParseOptions(utf8, QRX_VERSION);
        const Options* const options = std::get_if<Options>(&parsed);
        return options != nullptr ? Follow(*options, interruption) : Leave(std::get<EarlyExit>(parsed));
    } catch (const std::exception& error) {
        Console::Fail(error.what());
        return kExitFailed;
    }
}
