// OptionParameters: how the parameters are set and got that FileOptions holds.
//
// Owner: the targets. Threads: any. Errors: E_POINTER for no record, E_INVALIDARG for a value out of range, which
// changes nothing; std::bad_alloc.
#pragma once

#include <qrx_mkvmuxer.h>

struct ParameterTargets;

HRESULT SetProfile(const ParameterTargets& targets, const VARIANT& value, bool& changed);
HRESULT GetProfile(const ParameterTargets& targets, VARIANT& value);

HRESULT SetTrackFlags(const ParameterTargets& targets, const VARIANT& value, bool& changed);
HRESULT GetTrackFlags(const ParameterTargets& targets, VARIANT& value);
HRESULT SetTrackColour(const ParameterTargets& targets, const VARIANT& value, bool& changed);
HRESULT GetTrackColour(const ParameterTargets& targets, VARIANT& value);

HRESULT SetTitle(const ParameterTargets& targets, const VARIANT& value, bool& changed);
// A string of the caller's; what stood in the value is not freed, since nobody tells whether it was one.
HRESULT GetTitle(const ParameterTargets& targets, VARIANT& value);

HRESULT SetSeed(const ParameterTargets& targets, const VARIANT& value, bool& changed);
HRESULT GetSeed(const ParameterTargets& targets, VARIANT& value);

HRESULT SetTrackStatistics(const ParameterTargets& targets, const VARIANT& value, bool& changed);
HRESULT GetTrackStatistics(const ParameterTargets& targets, VARIANT& value);
HRESULT SetReserveIndex(const ParameterTargets& targets, const VARIANT& value, bool& changed);
HRESULT GetReserveIndex(const ParameterTargets& targets, VARIANT& value);
