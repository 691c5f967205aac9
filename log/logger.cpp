#include "log/logger.h"

#include <string>

#include "win/code_page_text.h"
#include "win/module_instance.h"

CLogger g_Logger;

namespace {

// The tildes of the banners are uneven on purpose; support scripts look for these exact lines.
constexpr WCHAR kOpenBanner[] =
    OLESTR("~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~CLogger::CreateLog~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~\r\n");
constexpr WCHAR kCloseBanner[] =
    OLESTR("~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~CLogger::CloseLog~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~\r\n");

constexpr WCHAR kLogSuffix[] = OLESTR(".log");
// A pointer below this is the identifier of a string resource.
constexpr ULONG_PTR kResourceIdLimit = 0x10000;

bool IsSeparator(WCHAR character) {
    return character == OLESTR('\\') || character == OLESTR('/');
}

WideString TextFromResource(UINT id) {
    const WCHAR* text = nullptr;
    // With a buffer size of 0 the call gives a pointer into the resource, which has no terminator.
    const int length = LoadStringW(win::ModuleInstance(), id, reinterpret_cast<WCHAR*>(&text), 0);
    return length > 0 && text != nullptr ? WideString(text, static_cast<size_t>(length)) : WideString();
}

WideString TextOf(const WCHAR* textOrId) {
    const auto value = reinterpret_cast<ULONG_PTR>(textOrId);
    if (value == 0) {
        return {};
    }
    return value < kResourceIdLimit ? TextFromResource(static_cast<UINT>(value)) : WideString(textOrId);
}

} // namespace

CLogger::~CLogger() {
    CloseLog();
    if (m_file != INVALID_HANDLE_VALUE) {
        CloseHandle(m_file); // switched off while open: no banner, but no handle left either
    }
}

CLogger& CLogger::operator<<(const WCHAR* text) {
    if (IsEnabled()) {
        WriteText(TextOf(text));
    }
    return *this;
}

CLogger& CLogger::operator<<(INT32 number) {
    if (IsEnabled()) {
        WriteText(ToWideDecimal(number));
    }
    return *this;
}

CLogger& CLogger::operator<<(INT64 number) {
    if (IsEnabled()) {
        WriteText(ToWideDecimal(number));
    }
    return *this;
}

int CLogger::OpenNamedLog(const WCHAR* directory, const WCHAR* baseName, bool overwrite) {
    const WideString path = TextOf(directory);
    CreateDirectoryPath(path);
    const WideString fileName = TextOf(baseName) + kLogSuffix;
    return CreateLog(path.c_str(), fileName.c_str(), overwrite);
}

int CLogger::CreateLog(const WCHAR* directory, const WCHAR* fileName, bool overwrite) {
    const WideString folder = TextOf(directory);
    // A directory that ends in a separator gives two in a row, which the file system accepts.
    const WideString path = folder + OLESTR("\\") + TextOf(fileName);
    const win::LockGuard lock(m_lock);
    m_directory = folder;
    if (!IsEnabled()) {
        return 1;
    }
    CloseOpenFile();
    m_file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, overwrite ? CREATE_ALWAYS : OPEN_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
    if (m_file == INVALID_HANDLE_VALUE) {
        return 0;
    }
    if (!overwrite) {
        SetFilePointer(m_file, 0, nullptr, FILE_END);
    }
    WriteOpenFile(kOpenBanner);
    return 1;
}

int CLogger::CloseLog() {
    if (IsEnabled()) {
        const win::LockGuard lock(m_lock);
        CloseOpenFile();
    }
    return 1;
}

WideString CLogger::Directory() const {
    const win::LockGuard lock(m_lock);
    return m_directory;
}

bool CLogger::WriteText(WideStringView text) {
    const win::LockGuard lock(m_lock);
    return WriteOpenFile(text);
}

bool CLogger::WriteOpenFile(WideStringView text) {
    if (m_file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const std::string ansi = win::NarrowFromWide(CP_THREAD_ACP, text);
    DWORD written = 0;
    return WriteFile(m_file, ansi.data(), static_cast<DWORD>(ansi.size()), &written, nullptr) != FALSE;
}

void CLogger::CloseOpenFile() {
    if (m_file == INVALID_HANDLE_VALUE) {
        return;
    }
    LogIfPossible([this] {
        m_lock.AssertHeld();
        WriteOpenFile(kCloseBanner);
    });
    CloseHandle(m_file);
    m_file = INVALID_HANDLE_VALUE;
}

void CreateDirectoryPath(WideStringView path) {
    if (path.empty()) {
        return;
    }
    WideString whole(path);
    if (!IsSeparator(whole.back())) {
        whole += OLESTR('\\');
    }
    for (size_t i = 0; i < whole.size(); ++i) {
        if (IsSeparator(whole[i])) {
            CreateDirectoryW(whole.substr(0, i).c_str(), nullptr);
        }
    }
}
