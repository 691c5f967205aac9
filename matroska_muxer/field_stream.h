// CFieldReader and CFieldWriter: single fields on a stream, in the platform's own little-endian order.
//
// Units: bytes unless named. Owner: the stream stays the caller's. Threads: one.
// Errors: throws the failing HRESULT, which the caller of a whole configuration catches.
#pragma once

#include <type_traits>
#include <vector>

#include "win/bstr.h"
#include "win/platform.h"

// An HRESULT on its way out of nested reads and writes.
struct StreamFailure {
    HRESULT hr;
};

class CFieldWriter {
  public:
    explicit CFieldWriter(IStream& stream) : m_stream(stream) {}

    template <typename Number>
    void Write(Number value) {
        static_assert(std::is_integral_v<Number>);
        WriteBytes(&value, sizeof(value));
    }
    // Nothing for a size of 0.
    void WriteBytes(const void* bytes, ULONG size);

  private:
    IStream& m_stream;
};

class CFieldReader {
  public:
    explicit CFieldReader(IStream& stream) : m_stream(stream) {}

    template <typename Number>
    [[nodiscard]] Number Read() {
        static_assert(std::is_integral_v<Number>);
        Number value{};
        ReadInto(&value, sizeof(value));
        return value;
    }
    // In pieces, so that a false length costs no more memory than bytes arrive.
    [[nodiscard]] std::vector<BYTE> ReadBytes(UINT64 size);
    // The code units that those bytes hold; an odd last byte is read and dropped.
    [[nodiscard]] win::Bstr ReadText(UINT64 bytes);
    // By reading: not every stream can seek.
    void Skip(UINT64 size);

  private:
    void ReadInto(void* buffer, ULONG size);

    IStream& m_stream;
};
