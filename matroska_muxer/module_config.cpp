// The parameters of the filter: single values, and all of them as one persisted stream. None takes the filter lock or
// the writer lock: the stream that is written to may ask for them on the worker, which Stop joins.
#include "dshow/com_guard.h"
#include "dshow/ref_time.h"
#include "log/logger.h"
#include "matroska_muxer/configuration_stream.h"
#include "matroska_muxer/matroska_muxer.h"

HRESULT CMatroskaMuxer::SetValue(const GUID* key, const VARIANT* value) noexcept {
    if (key == nullptr || value == nullptr) {
        return E_POINTER;
    }
    return ComGuard([&]() -> HRESULT {
        if (IsEqualGUID(*key, MKVMUX_TrackInfo)) {
            return SetTrackInfo(static_cast<const TrackSettings*>(V_BYREF(value)));
        }
        if (IsEqualGUID(*key, MKVMUX_Attachment)) {
            return AddAttachment(static_cast<const MuxAttachment*>(V_BYREF(value)));
        }
        if (IsEqualGUID(*key, MKVMUX_DocType)) {
            return SetDocType(V_UI4(value));
        }
        if (IsEqualGUID(*key, MKVMUX_LogDirectory)) {
            return SetLogDirectory(V_BSTR(value));
        }
        return E_FAIL;
    });
}

HRESULT CMatroskaMuxer::GetValue(const GUID* key, VARIANT* value) noexcept {
    if (key == nullptr || value == nullptr) {
        return E_POINTER;
    }
    return ComGuard([&]() -> HRESULT {
        if (IsEqualGUID(*key, MKVMUX_TrackInfo)) {
            return GetTrackInfo(static_cast<TrackSettings*>(V_BYREF(value)));
        }
        if (IsEqualGUID(*key, MKVMUX_Position)) {
            V_I8(value) = static_cast<LONGLONG>(m_writer.duration() / kNsPerReferenceTime);
            return S_OK;
        }
        if (IsEqualGUID(*key, MKVMUX_InputCount)) {
            V_UI2(value) = static_cast<USHORT>(Inputs().Count() - 1); // without the spare one
            return S_OK;
        }
        if (IsEqualGUID(*key, MKVMUX_DocType)) {
            V_UI4(value) = m_writer.outputFormat();
            return S_OK;
        }
        return E_FAIL;
    });
}

HRESULT CMatroskaMuxer::SetTrackInfo(const TrackSettings* record) {
    if (record == nullptr) {
        return E_POINTER;
    }
    if (!m_settings.Has(record->index)) {
        return E_INVALIDARG; // before the strings are read: such a record may hold anything
    }
    switch (m_settings.Replace(record->index, records::CTrackSettingsRow(*record))) {
    case records::CTrackSettingsTable::Replaced::Changed:
        return SetDirty(TRUE);
    case records::CTrackSettingsTable::Replaced::SameAsBefore:
        return S_OK;
    case records::CTrackSettingsTable::Replaced::OutsideTheTable:
        break;
    }
    return E_INVALIDARG;
}

HRESULT CMatroskaMuxer::SetDocType(UINT32 docType) {
    const UINT32 before = m_writer.outputFormat();
    m_writer.setOutputFormat(docType); // ignores all but 0 and 1
    return m_writer.outputFormat() == before ? S_OK : SetDirty(TRUE);
}

HRESULT CMatroskaMuxer::GetTrackInfo(TrackSettings* record) {
    if (record == nullptr) {
        return E_POINTER;
    }
    const INT32 index = record->index;
    const auto majorType = Inputs().MajorTypeOf(index);
    const auto row = m_settings.At(index);
    if (!row) {
        return E_INVALIDARG;
    }
    row->CopyTo(*record);
    if (majorType) {
        CMediaType type;
        type.SetType(&*majorType);
        record->trackType = CMkvWriter::getTrackType(type);
    }
    return S_OK;
}

HRESULT CMatroskaMuxer::AddAttachment(const MuxAttachment* record) {
    if (record == nullptr) {
        return E_POINTER;
    }
    return m_writer.addAttachment(*record) ? SetDirty(TRUE) : E_INVALIDARG;
}

HRESULT CMatroskaMuxer::SetLogDirectory(BSTR directory) {
    if (SysStringLen(directory) == 0) {
        g_Logger.CloseLog();
        g_Logger.SetEnabled(false);
        return S_OK;
    }
    g_Logger.SetEnabled(true);
    g_Logger.OpenNamedLog(directory, OLESTR("QRX_MKVMuxer"), false);
    return S_OK;
}

HRESULT CMatroskaMuxer::WriteToStream(IStream* stream) {
    return WriteConfiguration(*stream, m_settings, m_writer);
}

HRESULT CMatroskaMuxer::ReadFromStream(IStream* stream) {
    return ReadConfiguration(*stream, m_settings, m_writer);
}

HRESULT CMatroskaMuxer::DescribeValue(const GUID* /*key*/, IUnknown** description) noexcept {
    if (description != nullptr) {
        *description = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::IsSupported(const GUID* /*key*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::SetDefaults() noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::EnumValues(LONG* count, GUID** keys) noexcept {
    if (count != nullptr) {
        *count = 0;
    }
    if (keys != nullptr) {
        *keys = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::CommitChanges() noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::DeclineChanges() noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::SaveToRegistry(HKEY /*root*/, BSTR /*path*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::LoadFromRegistry(HKEY /*root*/, BSTR /*path*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::Advise(IUnknown* /*sink*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::Unadvise(IUnknown* /*sink*/) noexcept {
    return E_NOTIMPL;
}
