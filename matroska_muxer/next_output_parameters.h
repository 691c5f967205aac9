// NextOutputParameters: how the next file of a run is asked for.
//
// Owner: the targets. Threads: any. Errors: E_POINTER for no record; what CNextOutput answers.
#pragma once

#include <qrx_mkvmuxer.h>

struct ParameterTargets;

HRESULT SetNextOutput(const ParameterTargets& targets, const VARIANT& value, bool& changed);
HRESULT GetNextOutput(const ParameterTargets& targets, VARIANT& value);

HRESULT SetNextOutputRule(const ParameterTargets& targets, const VARIANT& value, bool& changed);
HRESULT GetNextOutputRule(const ParameterTargets& targets, VARIANT& value);
