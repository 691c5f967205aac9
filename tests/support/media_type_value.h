// MediaTypeValue: a media type that owns its format block, for tests. The block has exactly its length, so that a
// read behind it is seen by the sanitizers.
//
// Units: bytes. Owner: itself; copies are deep. Threads: as a value. Errors: std::bad_alloc.
#pragma once

#include <memory>
#include <span>

#include "win/platform.h"

namespace test_support {

class MediaTypeValue {
  public:
    MediaTypeValue() = default;
    MediaTypeValue(const GUID& majorType, const GUID& subtype, const GUID& formatType,
                   std::span<const BYTE> format = {});
    explicit MediaTypeValue(const AM_MEDIA_TYPE& type);
    MediaTypeValue(const MediaTypeValue& other) : MediaTypeValue(other.m_type) {}
    MediaTypeValue(MediaTypeValue&& other) noexcept;
    ~MediaTypeValue() = default;
    MediaTypeValue& operator=(MediaTypeValue other) noexcept;

    void SetFormat(std::span<const BYTE> format);
    // The same type with its format block cut off after so many bytes.
    [[nodiscard]] MediaTypeValue CutTo(size_t bytes) const;
    [[nodiscard]] std::span<const BYTE> Format() const;

    [[nodiscard]] AM_MEDIA_TYPE& Get() { return m_type; }
    [[nodiscard]] const AM_MEDIA_TYPE& Get() const { return m_type; }
    AM_MEDIA_TYPE* operator->() { return &m_type; }
    const AM_MEDIA_TYPE* operator->() const { return &m_type; }

  private:
    AM_MEDIA_TYPE m_type{};
    std::unique_ptr<BYTE[]> m_format;
};

// Deep copies whose memory the receiver frees, as interface methods hand them out (CoTaskMemAlloc).
[[nodiscard]] HRESULT CopyToTaskMemory(const AM_MEDIA_TYPE& from, AM_MEDIA_TYPE* to);
void FreeTaskMemoryFormat(AM_MEDIA_TYPE& type);
// Equal in all that says what the data is.
[[nodiscard]] bool SameMediaType(const AM_MEDIA_TYPE& left, const AM_MEDIA_TYPE& right);

} // namespace test_support
