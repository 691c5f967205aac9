#include "win/module_version.h"

#include <cstddef>
#include <cstring>
#include <optional>

#include "win/module_instance.h"
#include "win/platform.h"

namespace win {

namespace {

// VS_VERSIONINFO: three 16-bit fields and the key "VS_VERSION_INFO" with its zero, padded to four bytes.
constexpr size_t kFixedInfoOffsetBytes = 40;
// Not in every toolchain's headers: the identifier and the type of a version resource, the block's signature.
constexpr WORD kVersionResourceId = 1;
constexpr WORD kVersionResourceType = 16;
constexpr DWORD kFixedInfoSignature = 0xfeef04bd;

const WCHAR* ResourceId(WORD id) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the platform takes identifiers as pointers
    return reinterpret_cast<const WCHAR*>(static_cast<ULONG_PTR>(id));
}

std::optional<VS_FIXEDFILEINFO> FixedFileInfo() {
    const HINSTANCE module = ModuleInstance();
    const HRSRC found = FindResourceW(module, ResourceId(kVersionResourceId), ResourceId(kVersionResourceType));
    const HGLOBAL loaded = found == nullptr ? nullptr : LoadResource(module, found);
    const void* const bytes = loaded == nullptr ? nullptr : LockResource(loaded);
    if (bytes == nullptr || SizeofResource(module, found) < kFixedInfoOffsetBytes + sizeof(VS_FIXEDFILEINFO)) {
        return std::nullopt;
    }
    VS_FIXEDFILEINFO info{};
    std::memcpy(&info, static_cast<const std::byte*>(bytes) + kFixedInfoOffsetBytes, sizeof(info));
    return info.dwSignature == kFixedInfoSignature ? std::optional(info) : std::nullopt;
}

std::string TwoNumbers(DWORD halves) {
    return std::to_string(HIWORD(halves)) + "." + std::to_string(LOWORD(halves));
}

} // namespace

std::string ModuleVersionText() {
    const auto info = FixedFileInfo();
    if (!info) {
        return {};
    }
    return "Version " + TwoNumbers(info->dwFileVersionMS) + "." + TwoNumbers(info->dwFileVersionLS);
}

} // namespace win
