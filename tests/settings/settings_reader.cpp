// A process of its own for the tests: loads what they saved and compares.
//
// settings_reader ADDRESS: a settings file, or the path of a key below HKEY_CURRENT_USER.
// settings_reader --hold MODULE: loads a module and ends without unloading it; status 0 when it could be loaded.
// Exit status: 0 all as saved, 1 cannot be opened, 2 to 6 the first value that differs.
#include <cstdint>
#include <limits>
#include <string>

#include "settings/load.h"

#include <shellapi.h>

namespace {

int Compare(load_t& load) {
    unsigned char block[2] = {};
    std::uint32_t size = sizeof(block);
    if (load.load_int32(L"int32", 0) != -5) {
        return 2;
    }
    if (load.load_int64(L"int64", 0) != std::numeric_limits<std::int64_t>::min()) {
        return 3;
    }
    if (load.load_double(L"double", 0) != 0.1) {
        return 4;
    }
    if (load.load_string(L"string", L"") != L" a><b\r\n") {
        return 5;
    }
    const bool same = load.load_binary(L"binary", block, size) && size == 2 && block[0] == 0x01 && block[1] == 0xFE;
    return same ? 0 : 6;
}

int OpenAndCompare(const std::wstring& address) {
    load_t load;
    const bool opened = address.ends_with(L".xml")
                            ? load.open_file(L"section/sub section", address)
                            : load.open_key(address + L"\\section\\sub section", HKEY_CURRENT_USER);
    return opened ? Compare(load) : 1;
}

} // namespace

int main() {
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (count == 3 && std::wstring(L"--hold") == arguments[1]) {
        return LoadLibraryW(arguments[2]) == nullptr ? 1 : 0;
    }
    CoInitialize(nullptr);
    const int status = count == 2 ? OpenAndCompare(arguments[1]) : 1;
    CoUninitialize();
    LocalFree(arguments);
    return status;
}
