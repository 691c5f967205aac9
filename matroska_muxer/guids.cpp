// The identifiers that the public header declares, defined once for the module.
#include "win/platform.h"

#include <initguid.h>

#include <qrx_mkvmuxer.h>
