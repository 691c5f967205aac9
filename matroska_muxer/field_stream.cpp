#include "matroska_muxer/field_stream.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "dshow/stream_io.h"

namespace {

constexpr UINT64 kPieceBytes = 1048576; // 1 MiB
constexpr size_t kSkippedBytes = 4096;  // at a time

} // namespace

void CFieldWriter::WriteBytes(const void* bytes, ULONG size) {
    if (size == 0) {
        return;
    }
    if (const HRESULT hr = WriteExactly(&m_stream, bytes, size); FAILED(hr)) {
        throw StreamFailure{hr};
    }
}

void CFieldReader::ReadInto(void* buffer, ULONG size) {
    if (const HRESULT hr = ReadExactly(&m_stream, buffer, size); FAILED(hr)) {
        throw StreamFailure{hr};
    }
}

std::vector<BYTE> CFieldReader::ReadBytes(UINT64 size) {
    std::vector<BYTE> bytes;
    while (bytes.size() < size) {
        const auto piece = static_cast<ULONG>(std::min<UINT64>(kPieceBytes, size - bytes.size()));
        const size_t before = bytes.size();
        bytes.resize(before + piece);
        ReadInto(bytes.data() + before, piece);
    }
    return bytes;
}

win::Bstr CFieldReader::ReadText(UINT64 bytes) {
    const std::vector<BYTE> raw = ReadBytes(bytes);
    WideString text(raw.size() / sizeof(WCHAR), WCHAR{});
    if (!text.empty()) {
        std::memcpy(text.data(), raw.data(), text.size() * sizeof(WCHAR));
    }
    return win::Bstr(text);
}

void CFieldReader::Skip(UINT64 size) {
    std::array<BYTE, kSkippedBytes> bytes{};
    while (size > 0) {
        const auto piece = static_cast<ULONG>(std::min<UINT64>(bytes.size(), size));
        ReadInto(bytes.data(), piece);
        size -= piece;
    }
}
