#include "mkvmux/standard_output.h"

#include <string>

#include "mkvmux/console.h"
#include "mkvmux/failure.h"

namespace mkvmux {

win::FileHandle TakeStandardOutput() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    if (output == nullptr || output == INVALID_HANDLE_VALUE) {
        throw Failure(std::string("there is no ") + kStandardOutputName);
    }
    if (Console::IsTerminal()) {
        throw Failure(std::string(kStandardOutputName) + " is a console; -o - goes into a pipe or a file");
    }
    SetStdHandle(STD_OUTPUT_HANDLE, GetStdHandle(STD_ERROR_HANDLE));
    return win::FileHandle(output);
}

} // namespace mkvmux
