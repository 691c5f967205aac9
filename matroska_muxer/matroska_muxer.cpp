#include "matroska_muxer/matroska_muxer.h"

#include <memory>
#include <new>
#include <optional>

#include "dshow/com_guard.h"
#include "log/logger.h"
#include "matroska_muxer/muxer_parameters.h"
#include "matroska_muxer/stream_kind.h"
#include "matroska_muxer/writer_guard.h"
#include "media/input_types.h"
#include "mkv/mkv_io.h"
#include "mkv/mkv_writer.h"
#include "mux/base_mux_output_pin.h"

namespace {

void CountLost(const CMuxInterPacket& packet, CMuxInterStream* stream) {
    if (stream != nullptr) {
        stream->CountLost(packet.size);
    }
}

} // namespace

CUnknown* CMatroskaMuxer::CreateInstance(LPUNKNOWN outer, HRESULT* result) {
    return new CMatroskaMuxer(outer, result); // counted from 0: the class factory's first reference owns it
}

CMatroskaMuxer::CMatroskaMuxer(LPUNKNOWN outer, HRESULT* result)
    : CBaseMux(OLESTR("CMatroskaMuxer"), outer, CLSID_MatroskaMuxer), CPersistStream(GetOwner(), result),
      m_io(std::make_unique<CMkvIO>()), m_writer(std::make_unique<CMkvWriter>()),
      m_parameters(std::make_unique<CMuxerParameters>(*m_writer, Inputs(), Statistics(), m_io->figures())) {
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
        const bool isStrict = m_parameters->Options().Get().isStrict();
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
    HRESULT untold = S_OK;
    {
        const CAutoLock lock(&m_writerLock);
        m_io->forgetFigures();
        m_writer->forgetClusters();
        if (!m_downstream) {
            return kMuxFailedResult; // runs on without a file
        }
        m_isFailureTold = false;
        m_writer->detach();
        m_io->releaseStream();
        const HRESULT hr = GuardWriter(OLESTR("OnStartStreaming"), [this] {
            m_writerLock.AssertHeld();
            return OpenWriter();
        });
        if (FAILED(hr)) {
            m_writer->abandon();
            m_io->releaseStream();
            return hr;
        }
        untold = TakeUntoldFailure(S_OK);
    }
    TellGraph(untold);
    return S_OK;
}

HRESULT CMatroskaMuxer::OpenWriter() {
    RegisterTracks();
    m_io->setStream(m_downstream.Get());
    m_writer->Open(m_io.get(), m_parameters->Options().Get());
    return S_OK;
}

// One for each stream. Whether the row is enabled was asked when the streams were made; it may have changed since.
void CMatroskaMuxer::RegisterTracks() {
    m_filterLock.AssertHeld(); // streaming is being started
    int index = 0;
    for (const auto& pin : m_inputPins) {
        if (pin->Stream() != nullptr) {
            const records::CTrackSettingsRow row =
                m_parameters->Rows().At(index).value_or(records::CTrackSettingsRow(index));
            const auto& options = m_parameters->Options();
            m_writer->registerTrack(pin->CurrentMediaType(), row.Get(), options.FlagsOf(index),
                                    options.ColourOf(index));
        }
        ++index;
    }
}

HRESULT CMatroskaMuxer::OnStopStreaming() {
    HRESULT untold = S_OK;
    std::optional<CMkvWriter::IndexBeyondPlace> index;
    {
        const CAutoLock lock(&m_writerLock);
        LogIfPossible([] { g_Logger << OLESTR("CMatroskaMuxer::OnStopStreaming\r\n"); });
        if (m_writer->isOpen()) {
            untold = TakeUntoldFailure(CloseWriter());
            index = m_writer->indexBeyondPlace();
        }
        CBaseMux::OnStopStreaming();
    }
    TellGraph(untold);
    if (index) {
        NotifyEvent(MuxEvent_IndexAtEnd, static_cast<LONG_PTR>(index->bytes), static_cast<LONG_PTR>(index->placeBytes));
    }
    return S_OK;
}

HRESULT CMatroskaMuxer::CloseWriter() {
    const auto close = [this] {
        return GuardWriter(OLESTR("OnStopStreaming"), [this] {
            m_writerLock.AssertHeld();
            m_writer->Close();
            return m_writer->isFinished() ? S_OK : E_OUTOFMEMORY;
        });
    };
    const HRESULT hr = close();
    // What was thrown cost the last cluster; without that one the file can be finished.
    if (FAILED(hr) && m_writer->isOpen() && FAILED(close())) {
        m_writer->abandon();
    }
    m_io->releaseStream();
    m_writer->detach();
    return hr;
}

int CMatroskaMuxer::ProcessPacket(CMuxInterPacket* packet, CBaseMuxInputPin* pin) {
    HRESULT untold = S_OK;
    {
        const CAutoLock lock(&m_writerLock);
        untold = TakeUntoldFailure(WriteTold(*packet, pin->Stream()));
    }
    TellGraph(untold);
    return kMuxOk;
}

HRESULT CMatroskaMuxer::WriteTold(CMuxInterPacket& packet, CMuxInterStream* stream) {
    if (const HRESULT written = WriteResult(); written != S_OK && stream != nullptr) {
        stream->SetStreamResult(written);
    }
    // Text and subtitles: the kind was found out once, when streaming began.
    if (stream != nullptr && stream->Kind() == MuxStreamKind::Subtitle) {
        packet.muxerFlag = kBlockGroupFlag;
    }
    if (!m_writer->isOpen()) {
        CountLost(packet, stream);
        return S_OK;
    }
    const HRESULT hr = GuardWriter(OLESTR("ProcessPacket"), [&] {
        m_writerLock.AssertHeld();
        return WriteToWriter(packet);
    });
    if (FAILED(hr) && stream != nullptr) {
        stream->SetStreamResult(hr);
        CountLost(packet, stream);
    }
    return hr;
}

HRESULT CMatroskaMuxer::TakeUntoldFailure(HRESULT thrown) {
    const HRESULT failure = FAILED(m_io->firstLoss()) ? m_io->firstLoss() : thrown;
    if (SUCCEEDED(failure) || m_isFailureTold) {
        return S_OK;
    }
    m_isFailureTold = true;
    return failure;
}

void CMatroskaMuxer::TellGraph(HRESULT failure) {
    if (FAILED(failure)) {
        NotifyEvent(MuxEvent_OutputFailed, failure, 0);
    }
}

// A write that says that it succeeded may have kept a part only, and one behind the one that failed may have succeeded:
// what was lost all the same is told once.
HRESULT CMatroskaMuxer::WriteResult() {
    const HRESULT written = m_io->lastWriteResult();
    const bool hasLost = m_writer->takeUntoldLoss();
    return written == S_OK && hasLost ? STG_E_WRITEFAULT : written;
}

HRESULT CMatroskaMuxer::WriteToWriter(CMuxInterPacket& packet) {
    mkv::Packet out;
    out.start = packet.start;
    out.stop = packet.stop;
    out.data = packet.data.get();
    out.size = packet.size;
    out.syncPoint = packet.syncPoint;
    out.stream = static_cast<UINT32>(packet.streamIndex);
    out.blockGroup = packet.muxerFlag == kBlockGroupFlag;
    out.owned = &packet.data;
    m_writer->WritePacket(out);
    return S_OK;
}
