// AM_MEDIA_TYPE as the interfaces pass it: deep copies, and what a receiver has to free.
//
// Owner: the holder of the record; format block and record come from the task allocator, pUnk is counted.
// Errors: E_OUTOFMEMORY or null; the target then holds nothing. A length without a block counts as no block.
#pragma once

#include "win/platform.h"

// Overwrites the target, which must hold nothing, with a deep copy.
HRESULT CopyMediaType(AM_MEDIA_TYPE* pmtTarget, const AM_MEDIA_TYPE* pmtSource) noexcept;
// Frees what the record holds, not the record.
void FreeMediaType(AM_MEDIA_TYPE& mt) noexcept;
// A deep copy in a record of its own, or null.
AM_MEDIA_TYPE* CreateMediaType(const AM_MEDIA_TYPE* pSrc) noexcept;
// Frees the record and what it holds; null is allowed.
void DeleteMediaType(AM_MEDIA_TYPE* pmt) noexcept;
