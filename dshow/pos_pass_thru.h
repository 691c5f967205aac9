// Seeking commands for filters that pass them on upstream.
#pragma once

#include "win/platform.h"

// The system's object that answers IMediaSeeking and IMediaPosition by asking the peer of the given input pin.
// It is aggregated by pAgg if one is given, keeps no reference on the pin, and comes with one reference.
HRESULT CreatePosPassThru(LPUNKNOWN pAgg, BOOL bRenderer, IPin* pPin, IUnknown** ppPassThru) noexcept;
