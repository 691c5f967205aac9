#include "settings/file_identity.h"

#include "settings/file_open.h"

namespace {

std::wstring FinalPath(HANDLE file) {
    std::wstring path(GetFinalPathNameByHandleW(file, nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
    const DWORD chars =
        GetFinalPathNameByHandleW(file, path.data(), static_cast<DWORD>(path.size()), FILE_NAME_NORMALIZED);
    path.resize(chars < path.size() ? chars : 0);
    return path;
}

std::vector<BYTE> RightsOf(HANDLE file) {
    DWORD bytes = 0;
    GetKernelObjectSecurity(file, DACL_SECURITY_INFORMATION, nullptr, 0, &bytes);
    std::vector<BYTE> rights(bytes);
    const bool known =
        bytes > 0 && GetKernelObjectSecurity(file, DACL_SECURITY_INFORMATION, rights.data(), bytes, &bytes);
    return known ? rights : std::vector<BYTE>();
}

} // namespace

std::optional<FileIdentity> IdentityOf(const std::wstring& path) {
    const win::FileHandle file = OpenExisting(path, FILE_READ_ATTRIBUTES | READ_CONTROL);
    BY_HANDLE_FILE_INFORMATION facts{};
    if (!file || !GetFileInformationByHandle(file.Get(), &facts)) {
        return std::nullopt;
    }
    FileIdentity identity{FinalPath(file.Get()), facts.dwFileAttributes, RightsOf(file.Get())};
    return identity.path.empty() ? std::nullopt : std::optional(std::move(identity));
}

bool GiveRights(HANDLE file, const FileIdentity& identity) {
    if (identity.rights.empty()) {
        return true;
    }
    std::vector<BYTE> rights = identity.rights;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    // Inherited entries stay marked as such only on request.
    if (GetSecurityDescriptorControl(rights.data(), &control, &revision) && (control & SE_DACL_AUTO_INHERITED) != 0) {
        SetSecurityDescriptorControl(rights.data(), SE_DACL_AUTO_INHERIT_REQ, SE_DACL_AUTO_INHERIT_REQ);
    }
    return SetKernelObjectSecurity(file, DACL_SECURITY_INFORMATION, rights.data()) != FALSE;
}
