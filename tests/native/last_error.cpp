// The calling thread's last error.
#include "win/platform.h"

namespace {
thread_local DWORD t_lastError = ERROR_SUCCESS;
}

DWORD WINAPI GetLastError() {
    return t_lastError;
}

void WINAPI SetLastError(DWORD error) {
    t_lastError = error;
}
