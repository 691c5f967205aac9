// The factory templates of the test program, with class identifiers that nothing else uses.
#pragma once

#include "dshow/factory_template.h"
#include "win/platform.h"

namespace dshow_test {

// A filter with one video and audio input and one stream output; registered under a name of its own.
inline constexpr CLSID kFilterClass{0x8a3c9f21, 0x51d0, 0x4b87, {0xa2, 0x7e, 0x3c, 0x4b, 0x0d, 0x99, 0x61, 0x01}};
// No filter, and no setup data.
inline constexpr CLSID kPlainClass{0x8a3c9f21, 0x51d0, 0x4b87, {0xa2, 0x7e, 0x3c, 0x4b, 0x0d, 0x99, 0x61, 0x02}};
inline constexpr CLSID kUnknownClass{0x8a3c9f21, 0x51d0, 0x4b87, {0xa2, 0x7e, 0x3c, 0x4b, 0x0d, 0x99, 0x61, 0x03}};

extern const AMOVIESETUP_FILTER kFilterSetup;

// How the plain class's creation goes.
enum class Creation { Succeeds, ReportsFailure, ReportsFailureWithoutObject, GivesNothing, ThrowsNoMemory };
extern Creation g_creation;

// Calls of the plain class's init routine, as (class, loading).
struct InitCalls {
    int loading = 0;
    int unloading = 0;
};
extern InitCalls g_initCalls;

} // namespace dshow_test
