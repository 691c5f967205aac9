// The platform's headers, in the one order and with the one set of switches that all sources share.
#pragma once

#include <windows.h>

#include <objbase.h>
#include <ocidl.h>
#include <ole2.h>
#include <oleauto.h>

#include <strmif.h>

#include <control.h>

#include <amvideo.h>
#include <dvdmedia.h>
#include <mmreg.h>
#include <uuids.h>
#include <vfwmsgs.h>

#include <evcode.h>

#include <cguid.h>

// The remote procedure call headers make a macro of this everyday name.
#undef small
