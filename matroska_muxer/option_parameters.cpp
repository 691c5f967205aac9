#include "matroska_muxer/option_parameters.h"

#include "matroska_muxer/muxer_parameters.h"
#include "records/file_options.h"
#include "records/track_colour.h"
#include "records/track_settings_table.h"
#include "win/bstr.h"

using records::FileOptions;

HRESULT SetProfile(const ParameterTargets& targets, const VARIANT& value, bool& changed) {
    const UINT32 profile = V_UI4(&value);
    if (!records::IsProfile(profile)) {
        return E_INVALIDARG;
    }
    changed =
        targets.options.Change([profile](FileOptions& options) { options.profile = static_cast<MuxProfile>(profile); });
    return S_OK;
}

HRESULT GetProfile(const ParameterTargets& targets, VARIANT& value) {
    V_UI4(&value) = targets.options.Get().profile;
    return S_OK;
}

HRESULT SetTrackFlags(const ParameterTargets& targets, const VARIANT& value, bool& changed) {
    const auto* const record = static_cast<const MuxTrackFlags*>(V_BYREF(&value));
    if (record == nullptr) {
        return E_POINTER;
    }
    const MuxTrackFlags flags = *record; // checked and stored as one
    if (!targets.rows.Has(flags.index) || !records::AreTrackFlags(flags)) {
        return E_INVALIDARG;
    }
    changed = targets.options.SetFlags(flags);
    return S_OK;
}

HRESULT GetTrackFlags(const ParameterTargets& targets, VARIANT& value) {
    auto* const record = static_cast<MuxTrackFlags*>(V_BYREF(&value));
    if (record == nullptr) {
        return E_POINTER;
    }
    if (!targets.rows.Has(record->index)) {
        return E_INVALIDARG;
    }
    *record = targets.options.FlagsOf(record->index);
    return S_OK;
}

// Nothing that is saved changes.
HRESULT SetTrackColour(const ParameterTargets& targets, const VARIANT& value, bool& /*changed*/) {
    const auto* const record = static_cast<const MuxTrackColour*>(V_BYREF(&value));
    if (record == nullptr) {
        return E_POINTER;
    }
    const MuxTrackColour colour = *record; // checked and stored as one
    if (!targets.rows.Has(colour.index) || !records::IsTrackColour(colour)) {
        return E_INVALIDARG;
    }
    targets.options.SetColour(colour);
    return S_OK;
}

HRESULT GetTrackColour(const ParameterTargets& targets, VARIANT& value) {
    auto* const record = static_cast<MuxTrackColour*>(V_BYREF(&value));
    if (record == nullptr) {
        return E_POINTER;
    }
    if (!targets.rows.Has(record->index)) {
        return E_INVALIDARG;
    }
    *record = targets.options.ColourOf(record->index);
    return S_OK;
}

HRESULT SetTitle(const ParameterTargets& targets, const VARIANT& value, bool& changed) {
    const BSTR title = V_BSTR(&value);
    const WideStringView text =
        title == nullptr ? WideStringView() : WideStringView(title, static_cast<size_t>(SysStringLen(title)));
    if (!records::IsTitle(text)) {
        return E_INVALIDARG; // the length is looked at before the characters
    }
    changed = targets.options.Change([text](FileOptions& options) { options.title = text; });
    return S_OK;
}

HRESULT GetTitle(const ParameterTargets& targets, VARIANT& value) {
    V_BSTR(&value) = win::Bstr(targets.options.Get().title).Detach();
    return S_OK;
}

HRESULT SetSeed(const ParameterTargets& targets, const VARIANT& value, bool& changed) {
    const UINT64 seed = V_UI8(&value);
    changed = targets.options.Change([seed](FileOptions& options) { options.seed = seed; });
    return S_OK;
}

HRESULT GetSeed(const ParameterTargets& targets, VARIANT& value) {
    V_UI8(&value) = targets.options.Get().seed;
    return S_OK;
}

HRESULT SetTrackStatistics(const ParameterTargets& targets, const VARIANT& value, bool& changed) {
    const UINT32 statistics = V_UI4(&value);
    if (statistics > 1) {
        return E_INVALIDARG;
    }
    changed = targets.options.Change([statistics](FileOptions& options) { options.trackStatistics = statistics != 0; });
    return S_OK;
}

HRESULT GetTrackStatistics(const ParameterTargets& targets, VARIANT& value) {
    V_UI4(&value) = targets.options.Get().trackStatistics ? 1 : 0;
    return S_OK;
}

HRESULT SetReserveIndex(const ParameterTargets& targets, const VARIANT& value, bool& changed) {
    const auto* const record = static_cast<const MuxReservedIndex*>(V_BYREF(&value));
    if (record == nullptr) {
        return E_POINTER;
    }
    const MuxReservedIndex index = *record; // checked and stored as one
    if (!records::IsReservedIndex(index)) {
        return E_INVALIDARG;
    }
    changed = targets.options.Change([&index](FileOptions& options) {
        options.indexBytes = index.bytes;
        options.indexLength = index.expectedLength;
    });
    return S_OK;
}

HRESULT GetReserveIndex(const ParameterTargets& targets, VARIANT& value) {
    auto* const record = static_cast<MuxReservedIndex*>(V_BYREF(&value));
    if (record == nullptr) {
        return E_POINTER;
    }
    const FileOptions options = targets.options.Get();
    *record = {options.indexBytes, options.indexLength};
    return S_OK;
}
