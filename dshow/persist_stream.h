// CPersistStream: IPersistStream with a version header, a decimal number of 11 digits and a space as text.
//
// Owner: a base of the object that persists; that object implements IUnknown and GetClassID.
// Threads: as the object. Errors: the stream's; VFW_E_INVALID_FILE_FORMAT for a header that is no number.
#pragma once

#include <atomic>

#include "win/platform.h"

class CPersistStream : public IPersistStream {
  public:
    CPersistStream(IUnknown* punk, HRESULT* phr);
    virtual ~CPersistStream();

    // IPersistStream
    STDMETHODIMP IsDirty() noexcept override;
    // A loaded object is not dirty.
    STDMETHODIMP Load(LPSTREAM pStm) noexcept override;
    STDMETHODIMP Save(LPSTREAM pStm, BOOL fClearDirty) noexcept override;
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER* pcbSize) noexcept override;

    // Bytes that WriteToStream writes at most.
    virtual int SizeMax() { return 0; }
    virtual HRESULT WriteToStream(IStream* pStream);
    virtual HRESULT ReadFromStream(IStream* pStream);
    // The same for objects whose body has more than one form: told what the header of this very stream says, whatever
    // other threads save or load meanwhile.
    virtual HRESULT WriteVersionToStream(IStream* pStream, DWORD dwVersion);
    virtual HRESULT ReadVersionFromStream(IStream* pStream, DWORD dwVersion);
    // Written before the body; mPS_dwFileVersion holds what Load found there.
    virtual DWORD GetSoftwareVersion() { return 0; }

  protected:
    HRESULT SetDirty(BOOL fDirty);

    // Any thread may ask and change them; no lock is held while a stream is read or written.
    std::atomic<BOOL> mPS_fDirty{FALSE};
    std::atomic<DWORD> mPS_dwFileVersion{0};

  private:
    HRESULT LoadFrom(IStream* pStream);
    HRESULT SaveTo(IStream* pStream, BOOL fClearDirty);
};
