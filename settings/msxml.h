// MSXML's interfaces, and the two identifiers that the toolchain's libraries lack.
#pragma once

#include "win/platform.h"

#include <msxml2.h>

// The class of MSXML 2 that is not bound to a version.
inline constexpr CLSID kDomDocumentClass = {
    0xf6d90f11, 0x9c73, 0x11d3, {0xb3, 0x2e, 0x00, 0xc0, 0x4f, 0x99, 0x0b, 0xb4}};
inline constexpr IID kDomDocument2Id = {0x2933bf95, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};
