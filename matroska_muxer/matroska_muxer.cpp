#include "matroska_muxer/matroska_muxer.h"

#include <memory>
#include <new>
#include <optional>

#include "dshow/com_guard.h"
#include "log/logger.h"
#include "matroska_muxer/file_sequence.h"
#include "matroska_muxer/muxer_parameters.h"
#include "matroska_muxer/stream_kind.h"
#include "matroska_muxer/writer_guard.h"
#include "media/input_types.h"
#include "mkv/mkv_writer.h"
#include "mux/base_mux_output_pin.h"

CUnknown* CMatroskaMuxer::CreateInstance(LPUNKNOWN outer, HRESULT* result) {
    return new CMatroskaMuxer(outer, result); // counted from 0: the class factory's first reference owns it
}

CMatroskaMuxer::CMatroskaMuxer(LPUNKNOWN outer, HRESULT* result)
    : CBaseMux(OLESTR("CMatroskaMuxer"), outer, CLSID_MatroskaMuxer), CPersistStream(GetOwner(), result),
      m_writer(std::make_unique<CMkvWriter>()),
      m_files(std::make_unique<CFileSequence>(*m_writer, m_nextOutput, Interleaver(), m_options)),
      m_parameters(std::make_unique<CMuxerParameters>(
          CMuxerParameters::Reach{m_options, *m_writer, m_nextOutput, Inputs(), Statistics(), m_files->Figures()})) {
    HRESULT pinHr = S_OK;
    m_outputPin = std::make_unique<CBaseMuxOutputPin>(OLESTR("OutPin"), this, &m_filterLock, &pinHr, OLESTR("Out"));
    AddInputPin();
    if (result != nullptr && FAILED(pinHr)) {
        *result = pinHr;
    }
}

CMatroskaMuxer::~CMatroskaMuxer() {
    Stop(); // the hooks below must outlive the worker
}

HRESULT CMatroskaMuxer::NonDelegatingQueryInterface(REFIID iid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    if (IsEqualGUID(iid, IID_ISpecifyPropertyPages)) {
        return GetInterface(static_cast<ISpecifyPropertyPages*>(this), object);
    }
    if (IsEqualGUID(iid, IID_IModuleConfig)) {
        return GetInterface(static_cast<IModuleConfig*>(this), object);
    }
    if (IsEqualGUID(iid, IID_IPersistStream)) {
        return GetInterface(static_cast<CPersistStream*>(this), object);
    }
    return CBaseMux::NonDelegatingQueryInterface(iid, object);
}

HRESULT CMatroskaMuxer::GetPages(CAUUID* pages) noexcept {
    if (pages == nullptr) {
        return E_POINTER;
    }
    constexpr ULONG kPageCount = 2;
    *pages = {};
    pages->pElems = static_cast<GUID*>(CoTaskMemAlloc(kPageCount * sizeof(GUID)));
    if (pages->pElems == nullptr) {
        return E_OUTOFMEMORY;
    }
    pages->cElems = kPageCount;
    pages->pElems[0] = CLSID_MKVMuxerAboutPage;
    pages->pElems[1] = CLSID_MKVMuxerPropertyPage;
    return S_OK;
}

HRESULT CMatroskaMuxer::GetClassID(CLSID* clsid) noexcept {
    return CBaseMux::GetClassID(clsid);
}

HRESULT CMatroskaMuxer::SetValue(const GUID* key, const VARIANT* value) noexcept {
    if (key == nullptr || value == nullptr) {
        return E_POINTER;
    }
    return ComGuard([&] {
        bool changed = false;
        const HRESULT hr = m_parameters->Set(*key, *value, changed);
        return changed ? SetDirty(TRUE) : hr;
    });
}

HRESULT CMatroskaMuxer::GetValue(const GUID* key, VARIANT* value) noexcept {
    if (key == nullptr || value == nullptr) {
        return E_POINTER;
    }
    return ComGuard([&] { return m_parameters->Get(*key, *value); });
}

DWORD CMatroskaMuxer::GetSoftwareVersion() {
    return m_parameters->FormatToSave();
}

HRESULT CMatroskaMuxer::WriteVersionToStream(IStream* stream, DWORD version) {
    return m_parameters->Save(*stream, version);
}

HRESULT CMatroskaMuxer::ReadVersionFromStream(IStream* stream, DWORD version) {
    return m_parameters->Load(*stream, version);
}

int CMatroskaMuxer::CreateInputPin(CBaseMuxInputPin** pin, LPCWSTR name) {
    if (pin == nullptr) {
        return kMuxFailed;
    }
    HRESULT hr = S_OK;
    *pin = new (std::nothrow) CBaseMuxInputPin(OLESTR("InPin"), this, &m_filterLock, &hr, name); // the caller's
    return *pin == nullptr ? kMuxFailed : kMuxOk;
}

HRESULT CMatroskaMuxer::CheckInputType(const CMediaType* type) {
    return ComGuard([&] {
        const bool isStrict = m_options.Get().isStrict();
        const bool isAccepted = isStrict ? media::IsAcceptedStrictInputType(*type) : media::IsAcceptedInputType(*type);
        return isAccepted ? S_OK : kMuxFailedResult;
    });
}

MuxStreamKind CMatroskaMuxer::GetStreamKind(const CMediaType* type) {
    return StreamKindOf(*type);
}

bool CMatroskaMuxer::IsInputActive(int index) {
    return CBaseMux::IsInputActive(index) && m_parameters->Rows().IsEnabled(index);
}

HRESULT CMatroskaMuxer::OnStartStreaming() {
    CBaseMux::OnStartStreaming();
    std::vector<FileEvent> events;
    {
        const CAutoLock lock(&m_writerLock);
        m_files->ForgetFigures();
        if (!m_downstream) {
            return kMuxFailedResult; // runs on without a file
        }
        m_writer->detach();
        const HRESULT hr = OpenFile();
        if (FAILED(hr)) {
            return hr;
        }
        events = m_files->TakeEvents();
    }
    TellGraph(events);
    return S_OK;
}

HRESULT CMatroskaMuxer::OpenFile() {
    const HRESULT hr = GuardWriter(OLESTR("OnStartStreaming"), [this] {
        m_writerLock.AssertHeld();
        RegisterTracks();
        return S_OK;
    });
    if (FAILED(hr)) {
        m_writer->abandon();
        return hr;
    }
    return m_files->Open(m_downstream.Get());
}

// One for each stream. Whether the row is enabled was asked when the streams were made; it may have changed since.
void CMatroskaMuxer::RegisterTracks() {
    m_filterLock.AssertHeld(); // streaming is being started
    int index = 0;
    for (const auto& pin : m_inputPins) {
        if (pin->Stream() != nullptr) {
            const records::CTrackSettingsRow row =
                m_parameters->Rows().At(index).value_or(records::CTrackSettingsRow(index));
            m_writer->registerTrack(pin->CurrentMediaType(), row.Get(), m_options.FlagsOf(index),
                                    m_options.ColourOf(index));
        }
        ++index;
    }
}

HRESULT CMatroskaMuxer::OnStopStreaming() {
    std::vector<FileEvent> events;
    {
        const CAutoLock lock(&m_writerLock);
        LogIfPossible([] { g_Logger << OLESTR("CMatroskaMuxer::OnStopStreaming\r\n"); });
        if (m_writer->isOpen()) {
            m_files->Close();
            events = m_files->TakeEvents();
        }
        CBaseMux::OnStopStreaming();
    }
    TellGraph(events);
    return S_OK;
}

int CMatroskaMuxer::ProcessPacket(CMuxInterPacket* packet, CBaseMuxInputPin* pin) {
    std::vector<FileEvent> events;
    {
        const CAutoLock lock(&m_writerLock);
        m_files->Write(*packet, pin->Stream());
        if (m_files->HasEvents()) {
            events = m_files->TakeEvents();
        }
    }
    TellGraph(events);
    return kMuxOk;
}

void CMatroskaMuxer::TellGraph(const std::vector<FileEvent>& events) {
    for (const FileEvent& event : events) {
        NotifyEvent(event.code, event.first, event.second);
    }
}
