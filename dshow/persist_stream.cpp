#include "dshow/persist_stream.h"

#include <array>
#include <cstdio>
#include <limits>

#include "dshow/com_guard.h"
#include "dshow/stream_io.h"

namespace {

constexpr size_t kNumberLength = 11; // characters: sign or zero, and the ten digits of a 32-bit number
constexpr char kNumberFormat[] = "%011d";
constexpr WCHAR kTerminator = ' ';

using VersionHeader = std::array<WCHAR, kNumberLength + 1>; // the number and the terminator

constexpr ULONG kHeaderBytes = sizeof(VersionHeader);

HRESULT WriteVersion(IStream* stream, DWORD version) {
    char digits[kNumberLength + 1] = {};
    std::snprintf(digits, sizeof(digits), kNumberFormat, static_cast<INT32>(version));
    VersionHeader header{};
    for (size_t i = 0; i < kNumberLength; ++i) {
        header[i] = static_cast<WCHAR>(digits[i]);
    }
    header[kNumberLength] = kTerminator;
    return WriteExactly(stream, header.data(), kHeaderBytes);
}

bool IsDigit(WCHAR character) {
    return character >= '0' && character <= '9';
}

HRESULT ParseVersion(const VersionHeader& header, DWORD& version) {
    const bool negative = header[0] == '-';
    INT64 number = 0;
    for (size_t i = negative ? 1 : 0; i < kNumberLength; ++i) {
        if (!IsDigit(header[i])) {
            return VFW_E_INVALID_FILE_FORMAT;
        }
        number = number * 10 + (header[i] - '0');
    }
    number = negative ? -number : number;
    if (header[kNumberLength] != kTerminator || number > std::numeric_limits<INT32>::max() ||
        number < std::numeric_limits<INT32>::min()) {
        return VFW_E_INVALID_FILE_FORMAT;
    }
    version = static_cast<DWORD>(static_cast<INT32>(number));
    return S_OK;
}

} // namespace

CPersistStream::CPersistStream(IUnknown* /*punk*/, HRESULT* /*phr*/) {}

CPersistStream::~CPersistStream() = default;

HRESULT CPersistStream::IsDirty() noexcept {
    return mPS_fDirty ? S_OK : S_FALSE;
}

HRESULT CPersistStream::Load(LPSTREAM pStm) noexcept {
    return pStm == nullptr ? E_POINTER : ComGuard([&] { return LoadFrom(pStm); });
}

HRESULT CPersistStream::Save(LPSTREAM pStm, BOOL fClearDirty) noexcept {
    return pStm == nullptr ? E_POINTER : ComGuard([&] { return SaveTo(pStm, fClearDirty); });
}

HRESULT CPersistStream::GetSizeMax(ULARGE_INTEGER* pcbSize) noexcept {
    if (pcbSize == nullptr) {
        return E_POINTER;
    }
    pcbSize->QuadPart = 0;
    return ComGuard([&] {
        pcbSize->QuadPart = kHeaderBytes + static_cast<ULONGLONG>(SizeMax());
        return S_OK;
    });
}

HRESULT CPersistStream::LoadFrom(IStream* pStream) {
    VersionHeader header{};
    HRESULT hr = ReadExactly(pStream, header.data(), kHeaderBytes);
    DWORD version = 0;
    if (SUCCEEDED(hr)) {
        hr = ParseVersion(header, version);
    }
    if (SUCCEEDED(hr)) {
        mPS_dwFileVersion = version;
        hr = ReadVersionFromStream(pStream, version);
    }
    if (SUCCEEDED(hr)) {
        mPS_fDirty = FALSE; // it is what the stream holds
    }
    return hr;
}

HRESULT CPersistStream::SaveTo(IStream* pStream, BOOL fClearDirty) {
    const DWORD version = GetSoftwareVersion();
    HRESULT hr = WriteVersion(pStream, version);
    if (SUCCEEDED(hr)) {
        hr = WriteVersionToStream(pStream, version);
    }
    if (SUCCEEDED(hr) && fClearDirty) {
        mPS_fDirty = FALSE;
    }
    return hr;
}

HRESULT CPersistStream::WriteToStream(IStream* /*pStream*/) {
    return S_OK;
}

HRESULT CPersistStream::ReadFromStream(IStream* /*pStream*/) {
    return S_OK;
}

HRESULT CPersistStream::WriteVersionToStream(IStream* pStream, DWORD /*dwVersion*/) {
    return WriteToStream(pStream);
}

HRESULT CPersistStream::ReadVersionFromStream(IStream* pStream, DWORD /*dwVersion*/) {
    return ReadFromStream(pStream);
}

HRESULT CPersistStream::SetDirty(BOOL fDirty) {
    mPS_fDirty = fDirty;
    return S_OK;
}
