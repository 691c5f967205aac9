// Every identifier that the platform's headers declare, as an import library would offer it. Weak, so that a source
// which defines its own set (initguid.h) does not clash.
#define DECLSPEC_HIDDEN __attribute__((weak))
#include <initguid.h>

#include "win/platform.h"

#include <olectl.h>

extern "C" const IID GUID_NULL __attribute__((weak)) = {};
