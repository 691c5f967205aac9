#include "matroska_muxer/next_output_parameters.h"

#include "matroska_muxer/muxer_parameters.h"
#include "matroska_muxer/next_output.h"

HRESULT SetNextOutput(const ParameterTargets& targets, const VARIANT& value, bool& /*changed*/) {
    return targets.nextOutput.Want(V_UNKNOWN(&value));
}

HRESULT GetNextOutput(const ParameterTargets& targets, VARIANT& value) {
    V_UNKNOWN(&value) = targets.nextOutput.Wanted().Detach();
    return S_OK;
}

HRESULT SetNextOutputRule(const ParameterTargets& targets, const VARIANT& value, bool& /*changed*/) {
    const auto* const rule = static_cast<const MuxNextOutputRule*>(V_BYREF(&value));
    if (rule == nullptr) {
        return E_POINTER;
    }
    return rule->size < sizeof(*rule) ? E_INVALIDARG : targets.nextOutput.SetRule(*rule);
}

HRESULT GetNextOutputRule(const ParameterTargets& targets, VARIANT& value) {
    auto* const rule = static_cast<MuxNextOutputRule*>(V_BYREF(&value));
    if (rule == nullptr) {
        return E_POINTER;
    }
    if (rule->size < sizeof(*rule)) {
        return E_INVALIDARG;
    }
    *rule = targets.nextOutput.Rule();
    return S_OK;
}
