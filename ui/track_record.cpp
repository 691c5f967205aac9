#include "ui/track_record.h"

std::optional<TrackRecord> TrackRecord::Read(IModuleConfig& config, INT32 index) {
    win::Bstr language(L"");
    win::Bstr name(L"");
    TrackSettings row{index, 0, 0, 0, language.Detach(), name.Detach(), -1};
    VARIANT value{};
    value.vt = VT_BYREF;
    value.byref = &row;
    const HRESULT result = config.GetValue(&MKVMUX_TrackInfo, &value);
    // The filter has replaced the strings, or left ours there.
    TrackRecord record;
    *record.language.Put() = row.language;
    *record.name.Put() = row.name;
    if (FAILED(result)) {
        return std::nullopt;
    }
    record.index = index;
    record.enabled = row.bEnabled != 0;
    record.isDefault = row.bDefault;
    record.reserved = row.bReserved;
    record.trackType = row.trackType;
    return record;
}

HRESULT TrackRecord::Write(IModuleConfig& config) const {
    TrackSettings row{index,    static_cast<BYTE>(enabled ? 1 : 0), isDefault, reserved, language.Get(), name.Get(),
                      trackType};
    VARIANT value{};
    value.vt = VT_BYREF;
    value.byref = &row;
    return config.SetValue(&MKVMUX_TrackInfo, &value);
}
