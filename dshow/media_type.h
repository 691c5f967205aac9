// CMediaType: a media type as a value.
//
// Owner: its format block (task allocator) and its reference on pUnk. Threads: not synchronised.
// Errors: Set reports lack of memory; constructors and assignment throw std::bad_alloc.
#pragma once

#include "win/platform.h"

class CMediaType : public AM_MEDIA_TYPE {
  public:
    CMediaType();
    explicit CMediaType(const GUID* majortype);
    CMediaType(const AM_MEDIA_TYPE& mtype, HRESULT* phr = nullptr);
    CMediaType(const CMediaType& cmtype, HRESULT* phr = nullptr);
    CMediaType(CMediaType&& other) noexcept;
    ~CMediaType();

    CMediaType& operator=(const CMediaType& other);
    CMediaType& operator=(const AM_MEDIA_TYPE& other);
    CMediaType& operator=(CMediaType&& other) noexcept;
    // Equal are types of the same major type, subtype, format type and format block.
    BOOL operator==(const CMediaType& other) const;
    BOOL operator!=(const CMediaType& other) const { return !(*this == other); }

    // Becomes a copy; on failure this object is unchanged.
    HRESULT Set(const CMediaType& other) noexcept;
    HRESULT Set(const AM_MEDIA_TYPE& other) noexcept;

    // Whether a major type was given.
    BOOL IsValid() const { return majortype != GUID_NULL; }

    const GUID* Type() const { return &majortype; }
    void SetType(const GUID* type) { majortype = *type; }
    const GUID* Subtype() const { return &subtype; }
    void SetSubtype(const GUID* type) { subtype = *type; }

    BOOL IsFixedSize() const { return bFixedSizeSamples; }
    BOOL IsTemporalCompressed() const { return bTemporalCompression; }
    void SetTemporalCompression(BOOL compressed) { bTemporalCompression = compressed; }
    // 0 stands for samples of variable size, both ways.
    ULONG GetSampleSize() const { return IsFixedSize() ? lSampleSize : 0; }
    void SetSampleSize(ULONG size);
    void SetVariableSize() { bFixedSizeSamples = FALSE; }

    const GUID* FormatType() const { return &formattype; }
    void SetFormatType(const GUID* type) { formattype = *type; }
    BYTE* Format() const { return pbFormat; }
    ULONG FormatLength() const { return cbFormat; }
    // FALSE for lack of memory; the old block then stays.
    BOOL SetFormat(const BYTE* format, ULONG length);
    void ResetFormatBuffer();
    // A block of that length with unspecified content; null for lack of memory, and the old block then stays.
    BYTE* AllocFormatBuffer(ULONG length);
    // As AllocFormatBuffer, but keeps as much of the old content as fits.
    BYTE* ReallocFormatBuffer(ULONG length);

    void InitMediaType();

    // GUID_NULL in the partial type's major type, subtype or format type matches anything.
    BOOL MatchesPartial(const CMediaType* ppartial) const;
    BOOL IsPartiallySpecified() const { return majortype == GUID_NULL || formattype == GUID_NULL; }

  private:
    BYTE* ResizeFormatBuffer(ULONG length, ULONG kept);
};
