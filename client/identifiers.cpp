// The identifiers of the public header, defined once for every program that links this library.
#include "win/platform.h"

#include <initguid.h>

#include <qrx_mkvmuxer.h>
