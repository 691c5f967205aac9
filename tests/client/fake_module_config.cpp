#include "tests/client/fake_module_config.h"

namespace test_client {

namespace {

FakeModuleConfig::Text TextOf(BSTR text) {
    return text == nullptr ? FakeModuleConfig::Text() : WideString(text, SysStringLen(text));
}

void Replace(BSTR& text, const FakeModuleConfig::Text& by) {
    SysFreeString(text);
    text = by ? SysAllocStringLen(by->data(), static_cast<UINT>(by->size())) : nullptr;
}

FakeModuleConfig::Attached CopyOf(const MuxAttachment& record) {
    FakeModuleConfig::Attached copy{TextOf(record.fileName), TextOf(record.description), {}, {}, record.uid};
    if (record.mimeType != nullptr) {
        copy.mimeType = record.mimeType;
    }
    if (record.data != nullptr) {
        copy.data.emplace(record.data, record.data + record.dataSize);
    }
    return copy;
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
    lastTag = V_VT(value);
    if (*key == MKVMUX_DocType) {
        writes.push_back({std::nullopt, {}, V_UI4(value)});
        return docTypeAnswer;
    }
    if (*key == MKVMUX_LogDirectory) {
        logDirectories.push_back(TextOf(V_BSTR(value)));
        return S_OK;
    }
    if (*key == MKVMUX_Attachment) {
        attachments.push_back(CopyOf(*static_cast<const MuxAttachment*>(V_BYREF(value))));
        return S_OK;
    }
    const auto& record = *static_cast<const TrackSettings*>(V_BYREF(value));
    writes.push_back({record.index,
                      {record.bEnabled, record.bDefault, record.bReserved, TextOf(record.language), TextOf(record.name),
                       record.trackType},
                      0});
    return trackAnswer;
}

HRESULT FakeModuleConfig::GetValue(const GUID* key, VARIANT* value) {
    lastTag = V_VT(value);
    if (FAILED(readAnswer)) {
        return readAnswer;
    }
    if (*key == MKVMUX_DocType) {
        V_UI4(value) = docType;
        return S_OK;
    }
    if (*key == MKVMUX_InputCount) {
        V_UI2(value) = inputCount;
        return S_OK;
    }
    if (*key == MKVMUX_Position) {
        V_I8(value) = position;
        return S_OK;
    }
    return GetRow(*static_cast<TrackSettings*>(V_BYREF(value)));
}

HRESULT FakeModuleConfig::GetRow(TrackSettings& record) const {
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

HRESULT FakeModuleConfig::Load(IStream* stream) {
    loads.push_back(stream);
    return persistAnswer;
}

HRESULT FakeModuleConfig::Save(IStream* /*stream*/, BOOL clearDirty) {
    saves.push_back(clearDirty);
    return persistAnswer;
}

} // namespace test_client
