// ListParameters: how chapters and tags are set and got.
//
// Owner: the targets. Threads: any. Errors: E_POINTER for no record; E_INVALIDARG for a value that cannot be, for an
// index without a record and for more than the list holds; VFW_E_WRONG_STATE for a mark while no file is open. Nothing
// is changed then. std::bad_alloc.
#pragma once

#include <qrx_mkvmuxer.h>

struct ParameterTargets;

HRESULT SetChapter(const ParameterTargets& targets, const VARIANT& value, bool& changed);
HRESULT GetChapter(const ParameterTargets& targets, VARIANT& value);

HRESULT SetTag(const ParameterTargets& targets, const VARIANT& value, bool& changed);
HRESULT GetTag(const ParameterTargets& targets, VARIANT& value);
