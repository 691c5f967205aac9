// The one source file that defines the identifiers of the muxer's public header.
#include <initguid.h>

#include "include/qrx_mkvmuxer.h"
