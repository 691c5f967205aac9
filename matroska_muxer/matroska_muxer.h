// CMatroskaMuxer: the filter of this module. It decides which types the inputs take, keeps the settings of the
// tracks, and hands packets and output stream to the Matroska writer.
//
// Owner: its references. Threads: start and stop on the application's thread, packets on the worker; the writer lock
// keeps them apart. Parameters come on any thread.
// Errors: HRESULTs; what the writer throws is logged and becomes one.
#pragma once

#include <memory>

#include "dshow/persist_stream.h"
#include "matroska_muxer/module_config_base.h"
#include "mux/base_mux.h"

class CMkvIO;
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
    // The value of a packet's muxer flag that asks for a block group.
    static constexpr BYTE kBlockGroupFlag = 1;

    HRESULT OpenWriter() QRX_REQUIRES(m_writerLock);
    void RegisterTracks() QRX_REQUIRES(m_writerLock);
    [[nodiscard]] HRESULT WriteResult() QRX_REQUIRES(m_writerLock);
    // The packet with what it was told of the output before, and why it did not reach the file.
    HRESULT WriteTold(CMuxInterPacket& packet, CMuxInterStream* stream) QRX_REQUIRES(m_writerLock);
    HRESULT WriteToWriter(CMuxInterPacket& packet) QRX_REQUIRES(m_writerLock);
    HRESULT CloseWriter() QRX_REQUIRES(m_writerLock);
    // The first failure of the run's output, once: what was thrown just now, or what a write met. S_OK for none.
    [[nodiscard]] HRESULT TakeUntoldFailure(HRESULT thrown) QRX_REQUIRES(m_writerLock);
    // To the graph, which may ask the filter something back: without the writer lock.
    void TellGraph(HRESULT failure);

    CCritSec m_writerLock;
    const std::unique_ptr<CMkvIO> m_io QRX_PT_GUARDED_BY(m_writerLock);
    const std::unique_ptr<CMkvWriter> m_writer QRX_PT_GUARDED_BY(m_writerLock);
    bool m_isFailureTold QRX_GUARDED_BY(m_writerLock) = false; // to the graph, in this run
    const std::unique_ptr<CMuxerParameters> m_parameters;
};
