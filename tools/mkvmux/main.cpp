// mkvmux: multiplexes the streams of media files into one Matroska or WebM file with the muxer filter.
#include <exception>
#include <string>
#include <variant>
#include <vector>

#include "tools/mkvmux/console.h"
#include "tools/mkvmux/exit_status.h"
#include "tools/mkvmux/failure.h"
#include "tools/mkvmux/identify.h"
#include "tools/mkvmux/mux_job.h"
#include "tools/mkvmux/options.h"
#include "tools/mkvmux/text.h"
#include "win/platform.h"

namespace {

using namespace mkvmux;

// COM for the life of the object. Multithreaded, since nobody here pumps messages.
class ComApartment {
  public:
    ComApartment() {
        if (const HRESULT hr = CoInitializeEx(nullptr, COINIT_MULTITHREADED); FAILED(hr)) {
            throw Failure("COM cannot be initialised: " + DescribeResult(hr));
        }
    }
    ~ComApartment() { CoUninitialize(); }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
};

int Follow(const Options& options) {
    Console console(options.quiet);
    const ComApartment apartment;
    if (options.identify) {
        Console::Print(Identify(options));
    } else {
        Mux(options, console);
    }
    return console.HasWarned() ? kExitDoneWithWarnings : kExitDone;
}

int Leave(const EarlyExit& exit) {
    exit.status == kExitDone ? Console::Print(exit.output) : Console::Fail(exit.output);
    return exit.status;
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    try {
        std::vector<std::string> utf8;
        for (int i = 1; i < count; ++i) {
            utf8.push_back(Utf8FromWide(arguments[i]));
        }
        const auto parsed = ParseOptions(utf8, QRX_VERSION);
        const Options* const options = std::get_if<Options>(&parsed);
        return options != nullptr ? Follow(*options) : Leave(std::get<EarlyExit>(parsed));
    } catch (const std::exception& error) {
        Console::Fail(error.what());
        return kExitFailed;
    }
}
