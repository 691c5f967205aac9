// The windows of these tests are real ones: without a screen nothing is tested, and that is a failure.
#include <gmock/gmock.h>

#include "win/platform.h"

namespace {

// A crash ends the run; nobody would close a debugger's window on this screen.
LONG WINAPI EndAtOnce(EXCEPTION_POINTERS* /*what*/) {
    TerminateProcess(GetCurrentProcess(), 3);
    return EXCEPTION_EXECUTE_HANDLER;
}

} // namespace

int main(int argc, char** argv) {
    // Real pixels at every resolution, as a host that knows of resolutions sees them.
    SetProcessDPIAware();
    SetUnhandledExceptionFilter(EndAtOnce);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
