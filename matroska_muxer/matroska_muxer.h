// CMatroskaMuxer: the filter of this module. It decides which types the inputs take, keeps the settings of the
// tracks, and hands packets and output stream to the Matroska writer.
//
// Owner: its references. Threads: start and stop on the application's thread, packets on the worker; the writer lock
// keeps them apart. Parameters come on any thread.
// Errors: HRESULTs; what the writer throws is logged and becomes one.
#pragma once

#include <qrx_mkvmuxer.h>

#include "dshow/persist_stream.h"
#include "records/track_settings_table.h"
#include "mkv/mkv_io.h"
#include "mkv/mkv_writer.h"
#include "mux/base_mux.h"

class CMatroskaMuxer final : public CBaseMux,
                             public ISpecifyPropertyPages,
                             public IModuleConfig,
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
    STDMETHODIMP DescribeValue(const GUID* key, IUnknown** description) noexcept override;
    STDMETHODIMP IsSupported(const GUID* key) noexcept override;
    STDMETHODIMP SetDefaults() noexcept override;
    STDMETHODIMP EnumValues(LONG* count, GUID** keys) noexcept override;
    STDMETHODIMP CommitChanges() noexcept override;
    STDMETHODIMP DeclineChanges() noexcept override;
    STDMETHODIMP SaveToRegistry(HKEY root, BSTR path) noexcept override;
    STDMETHODIMP LoadFromRegistry(HKEY root, BSTR path) noexcept override;
    STDMETHODIMP Advise(IUnknown* sink) noexcept override;
    STDMETHODIMP Unadvise(IUnknown* sink) noexcept override;

    // The settings of the tracks: one row for each of the first 100 inputs.
    [[nodiscard]] records::CTrackSettingsTable& Settings() { return m_settings; }
    [[nodiscard]] CMkvWriter& Writer() { return m_writer; }

    // CPersistStream
    HRESULT WriteToStream(IStream* stream) override;
    HRESULT ReadFromStream(IStream* stream) override;

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

    HRESULT OpenWriter();
    void RegisterTracks();
    HRESULT WriteToWriter(const CMuxInterPacket& packet);
    void CloseWriter();

    HRESULT SetTrackInfo(const TrackSettings* record);
    HRESULT GetTrackInfo(TrackSettings* record);
    HRESULT SetDocType(UINT32 docType);
    HRESULT AddAttachment(const MuxAttachment* record);
    static HRESULT SetLogDirectory(BSTR directory);

    CCritSec m_writerLock; // guards m_io and m_writer
    CMkvIO m_io;
    CMkvWriter m_writer;
    records::CTrackSettingsTable m_settings;
};
