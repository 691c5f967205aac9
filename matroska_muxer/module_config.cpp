// The parameters of the filter: single values, and all of them as one persisted stream.
#include "dshow/com_guard.h"
#include "log/logger.h"
#include "matroska_muxer/configuration_stream.h"
#include "matroska_muxer/matroska_muxer.h"

namespace {

constexpr double kNsPerReferenceTime = 100.0;

} // namespace

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
            m_writer.setOutputFormat(V_UI4(value)); // ignores all but 0 and 1
            return SetDirty(TRUE);
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
            const CAutoLock lock(&m_filterLock);
            V_UI2(value) = static_cast<USHORT>(m_inputPins.size() - 1); // without the spare one
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
    return m_settings.Replace(record->index, CTrackSettingsRow(*record)) ? SetDirty(TRUE) : E_INVALIDARG;
}

HRESULT CMatroskaMuxer::GetTrackInfo(TrackSettings* record) {
    if (record == nullptr) {
        return E_POINTER;
    }
    const INT32 index = record->index;
    const auto row = m_settings.At(index);
    if (!row) {
        return E_INVALIDARG;
    }
    row->copyTo(*record);
    const CAutoLock lock(&m_filterLock);
    if (static_cast<size_t>(index) < m_inputPins.size() && m_inputPins[static_cast<size_t>(index)]->IsConnected()) {
        const CBaseMuxInputPin& pin = *m_inputPins[static_cast<size_t>(index)];
        record->trackType = CMkvWriter::getTrackType(pin.CurrentMediaType());
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
