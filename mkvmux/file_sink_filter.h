// CFileSinkFilter: a renderer with one input pin that takes MEDIATYPE_Stream and offers IStream on a file. Whatever
// is in front of it writes through that stream; samples are refused.
//
// Owner: its references; the stream keeps the filter, and so the file, alive.
// Threads: as the filter graph and the writer in front of it call.
// Errors: the first failed write or seek ends the graph's run with EC_ERRORABORT.
#pragma once

#include <string>
#include <utility>

#include "dshow/base_filter.h"
#include "dshow/base_input_pin.h"
#include "mkvmux/file_stream.h"
#include "win/com_ptr.h"

namespace mkvmux {

class CFileSinkFilter;

class CFileSinkPin : public CBaseInputPin {
  public:
    CFileSinkPin(CFileSinkFilter* filter, CCritSec* lock, HRESULT* phr);

    [[nodiscard]] CFileStream& Stream() { return m_stream; }
    [[nodiscard]] const CFileStream& Stream() const { return m_stream; }

    STDMETHODIMP NonDelegatingQueryInterface(REFIID iid, void** object) override;
    HRESULT CheckMediaType(const CMediaType* type) override;

    STDMETHODIMP Receive(IMediaSample* sample) noexcept override;
    STDMETHODIMP EndOfStream() noexcept override;

  private:
    CFileSinkFilter* m_sink; // not owned: the filter owns the pin
    CFileStream m_stream;
};

class CFileSinkFilter : public CBaseFilter, public IFileSinkFilter, public IAMFilterMiscFlags {
  public:
    static win::ComPtr<CFileSinkFilter> Make();
    // For a class factory.
    static CUnknown* CreateInstance(LPUNKNOWN outer, HRESULT* phr);

    HRESULT CreateFileOnDisk(const std::wstring& path, bool overwrite);
    // What is open already and cannot seek.
    void WriteTo(win::FileHandle pipe) { m_pin.Stream().TakePipe(std::move(pipe)); }
    [[nodiscard]] const CFileStream& Stream() const { return m_pin.Stream(); }
    [[nodiscard]] CFileStream& Stream() { return m_pin.Stream(); }

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID iid, void** object) override;

    // CBaseFilter
    int GetPinCount() override;
    CBasePin* GetPin(int index) override;
    STDMETHODIMP Run(REFERENCE_TIME start) noexcept override;
    STDMETHODIMP Stop() noexcept override;

    // IFileSinkFilter: an existing file is overwritten. The media type is left unset, as the file's writer decides it.
    STDMETHODIMP SetFileName(LPCOLESTR name, const AM_MEDIA_TYPE* type) noexcept override;
    STDMETHODIMP GetCurFile(LPOLESTR* name, AM_MEDIA_TYPE* type) noexcept override;

    // IAMFilterMiscFlags: a renderer, whose EC_COMPLETE the graph waits for.
    STDMETHODIMP_(ULONG) GetMiscFlags() noexcept override { return AM_FILTER_MISC_FLAGS_IS_RENDERER; }

    void OnEndOfStream();

  private:
    CFileSinkFilter(LPUNKNOWN outer, HRESULT* phr);
    void NotifyComplete() QRX_REQUIRES(m_lock);

    CCritSec m_lock;
    CFileSinkPin m_pin;
    bool m_endOfStream QRX_GUARDED_BY(m_lock) = false; // as is the filter's state
};

} // namespace mkvmux
