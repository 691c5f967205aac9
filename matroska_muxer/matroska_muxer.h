// CMatroskaMuxer: the filter of this module. It decides which types the inputs take, keeps the settings of the
// tracks, and hands packets and output stream to the Matroska writer.
//
// Owner: its references. Threads: start and stop on the application's thread, packets on the worker; the writer lock
// keeps them apart. Parameters come on any thread.
// Errors: HRESULTs; what the writer throws is logged and becomes one.
#pragma once

#include <memory>
#include <vector>

#include "dshow/persist_stream.h"
#include "matroska_muxer/file_event.h"
#include "matroska_muxer/module_config_base.h"
#include "matroska_muxer/next_output.h"
#include "mux/base_mux.h"
#include "records/file_options.h"

class CFileSequence;
class CMkvWriter;
class CMuxerParameters;

class CMatroskaMuxer final : public CBaseMux,
                             public ISpecifyPropertyPages,
                             public CModuleConfigBase,
                             public CPersistStream {
  public:
    // For the class factory. The status of the output pin's creation goes to *result.
    static CUnknown* CreateInstance(LPUNKNOWN outer, HRESULT* result);

    CMatroskaMuxer(LPUNKNOWN outer, HRESULT* result);
    ~CMatroskaMuxer() override;

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID iid, void** object) override;

    // ISpecifyPropertyPages
    STDMETHODIMP GetPages(CAUUID* pages) noexcept override;

    // IPersistStream, of both bases
    STDMETHODIMP GetClassID(CLSID* clsid) noexcept override;
    STDMETHODIMP IsDirty() noexcept override { return CPersistStream::IsDirty(); }
    STDMETHODIMP Load(IStream* stream) noexcept override { return CPersistStream::Load(stream); }
    STDMETHODIMP Save(IStream* stream, BOOL clearDirty) noexcept override {
        return CPersistStream::Save(stream, clearDirty);
    }
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER* size) noexcept override { return CPersistStream::GetSizeMax(size); }

    // IModuleConfig. A null record or variant is E_POINTER.
    STDMETHODIMP SetValue(const GUID* key, const VARIANT* value) noexcept override;
    STDMETHODIMP GetValue(const GUID* key, VARIANT* value) noexcept override;

    // CPersistStream
    DWORD GetSoftwareVersion() override;
    HRESULT WriteVersionToStream(IStream* stream, DWORD version) override;
    HRESULT ReadVersionFromStream(IStream* stream, DWORD version) override;

    // CBaseMux
    int CreateInputPin(CBaseMuxInputPin** pin, LPCWSTR name) override;
    HRESULT CheckInputType(const CMediaType* type) override;
    MuxStreamKind GetStreamKind(const CMediaType* type) override;
    bool IsInputActive(int index) override;
    HRESULT OnStartStreaming() override;
    HRESULT OnStopStreaming() override;
    int ProcessPacket(CMuxInterPacket* packet, CBaseMuxInputPin* pin) override;

  private:
    HRESULT OpenFile() QRX_REQUIRES(m_writerLock);
    void RegisterTracks() QRX_REQUIRES(m_writerLock);
    // Without the writer lock: it may ask the filter something back.
    void TellGraph(const std::vector<FileEvent>& events) QRX_EXCLUDES(m_writerLock);

    records::CFileOptions m_options;
    CNextOutput m_nextOutput;
    CCritSec m_writerLock;
    const std::unique_ptr<CMkvWriter> m_writer QRX_PT_GUARDED_BY(m_writerLock);
    const std::unique_ptr<CFileSequence> m_files QRX_PT_GUARDED_BY(m_writerLock);
    const std::unique_ptr<CMuxerParameters> m_parameters;
};
