// StatisticsParameters: how the parameters are got that tell what is going on.
//
// Owner: the targets. Threads: any. Errors: E_POINTER for no record, E_INVALIDARG for one that is too short and for an
// input that is not there; nothing is written then.
#pragma once

#include <qrx_mkvmuxer.h>

struct ParameterTargets;

HRESULT GetStatistics(const ParameterTargets& targets, VARIANT& value);
HRESULT GetInputStatistics(const ParameterTargets& targets, VARIANT& value);
