#include "tests/ui/fake_module_config.h"

namespace ui_test {

namespace {

std::wstring TextOf(BSTR text) {
    return text == nullptr ? std::wstring() : std::wstring(text, SysStringLen(text));
}

void Replace(BSTR& text, const std::wstring& by) {
    SysFreeString(text);
    text = SysAllocStringLen(by.data(), static_cast<UINT>(by.size()));
}

} // namespace

void FakeModuleConfig::AddInputs(std::initializer_list<INT32> trackTypes) {
    for (const INT32 type : trackTypes) {
        Row row;
        row.trackType = type;
        rows[inputCount++] = row;
    }
}

HRESULT FakeModuleConfig::QueryInterface(REFIID iid, void** object) {
    if (iid != IID_IUnknown && iid != IID_IModuleConfig) {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    *object = static_cast<IModuleConfig*>(this);
    AddRef();
    return S_OK;
}

HRESULT FakeModuleConfig::SetValue(const GUID* key, const VARIANT* value) {
    if (*key == MKVMUX_DocType) {
        writes.push_back({std::nullopt, {}, value->ulVal});
        return docTypeAnswer;
    }
    const auto& record = *static_cast<const TrackSettings*>(value->byref);
    writes.push_back({record.index,
                      {record.bEnabled, record.bDefault, record.bReserved, TextOf(record.language), TextOf(record.name),
                       record.trackType},
                      0});
    return trackAnswer;
}

HRESULT FakeModuleConfig::GetValue(const GUID* key, VARIANT* value) {
    if (FAILED(readAnswer)) {
        return readAnswer;
    }
    if (*key == MKVMUX_DocType) {
        value->ulVal = docType;
        return S_OK;
    }
    if (*key == MKVMUX_InputCount) {
        value->uiVal = inputCount;
        return S_OK;
    }
    auto& record = *static_cast<TrackSettings*>(value->byref);
    const auto found = rows.find(record.index);
    if (found == rows.end()) {
        return E_INVALIDARG;
    }
    record.bEnabled = found->second.enabled;
    record.bDefault = found->second.isDefault;
    record.bReserved = found->second.reserved;
    Replace(record.language, found->second.language);
    Replace(record.name, found->second.name);
    record.trackType = found->second.trackType;
    return S_OK;
}

} // namespace ui_test
