#include "tests/client/fake_module_config.h"

#include <gtest/gtest.h>

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

bool IsOption(const GUID& key) {
    return key == MKVMUX_Profile || key == MKVMUX_TrackFlags || key == MKVMUX_Title || key == MKVMUX_Seed ||
           key == MKVMUX_TrackStatistics || key == MKVMUX_TrackColour || key == MKVMUX_ReserveIndex;
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
    if (*key == MKVMUX_NextOutput) {
        nextOutputs.push_back(V_UNKNOWN(value));
        return S_OK;
    }
    if (*key == MKVMUX_NextOutputRule) {
        nextOutputRules.push_back(*static_cast<const MuxNextOutputRule*>(V_BYREF(value)));
        return S_OK;
    }
    if (IsOption(*key)) {
        return SetOption(*key, *value);
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
    if (*key == MKVMUX_Statistics) {
        auto& record = *static_cast<MuxStatistics*>(V_BYREF(value));
        EXPECT_EQ(sizeof(record), record.size);
        record = file;
        record.size = sizeof(record);
        return S_OK;
    }
    if (*key == MKVMUX_InputStatistics) {
        return GetFigures(*static_cast<MuxInputStatistics*>(V_BYREF(value)));
    }
    if (IsOption(*key)) {
        return GetOption(*key, *value);
    }
    return GetRow(*static_cast<TrackSettings*>(V_BYREF(value)));
}

HRESULT FakeModuleConfig::SetOption(const GUID& key, const VARIANT& value) {
    if (!options) {
        return E_FAIL;
    }
    ++optionWrites;
    if (FAILED(optionAnswer)) {
        return optionAnswer;
    }
    if (key == MKVMUX_Profile) {
        options->profile = V_UI4(&value);
    } else if (key == MKVMUX_Title) {
        options->title = TextOf(V_BSTR(&value)).value_or(WideString());
    } else if (key == MKVMUX_Seed) {
        options->seed = V_UI8(&value);
    } else if (key == MKVMUX_TrackStatistics) {
        options->statistics = V_UI4(&value);
    } else if (key == MKVMUX_TrackColour) {
        options->colour = *static_cast<const MuxTrackColour*>(V_BYREF(&value));
    } else if (key == MKVMUX_ReserveIndex) {
        options->index = *static_cast<const MuxReservedIndex*>(V_BYREF(&value));
    } else {
        const auto& flags = *static_cast<const MuxTrackFlags*>(V_BYREF(&value));
        options->flags[flags.index] = flags;
    }
    return S_OK;
}

HRESULT FakeModuleConfig::GetOption(const GUID& key, VARIANT& value) const {
    if (!options) {
        return E_FAIL;
    }
    if (key == MKVMUX_Profile) {
        V_UI4(&value) = options->profile;
    } else if (key == MKVMUX_Title) {
        V_BSTR(&value) = SysAllocStringLen(options->title.data(), static_cast<UINT>(options->title.size()));
    } else if (key == MKVMUX_Seed) {
        V_UI8(&value) = options->seed;
    } else if (key == MKVMUX_TrackStatistics) {
        V_UI4(&value) = options->statistics;
    } else if (key == MKVMUX_TrackColour) {
        *static_cast<MuxTrackColour*>(V_BYREF(&value)) = options->colour;
    } else if (key == MKVMUX_ReserveIndex) {
        *static_cast<MuxReservedIndex*>(V_BYREF(&value)) = options->index;
    } else {
        auto& flags = *static_cast<MuxTrackFlags*>(V_BYREF(&value));
        const auto found = options->flags.find(flags.index);
        if (found == options->flags.end()) {
            return E_INVALIDARG;
        }
        flags = found->second;
    }
    return S_OK;
}

HRESULT FakeModuleConfig::GetFigures(MuxInputStatistics& record) const {
    EXPECT_EQ(sizeof(record), record.size);
    const INT32 index = record.index;
    if (index < 0 || static_cast<size_t>(index) >= figures.size()) {
        return E_INVALIDARG;
    }
    record = figures[static_cast<size_t>(index)];
    record.size = sizeof(record);
    record.index = index;
    return S_OK;
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
