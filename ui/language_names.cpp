#include "ui/language_names.h"

#include "mkv/language_table.h"

namespace {

std::wstring WideFromAnsi(const char* text) {
    const int size = MultiByteToWideChar(CP_THREAD_ACP, 0, text, -1, nullptr, 0);
    if (size <= 0) {
        return {};
    }
    std::wstring wide(static_cast<size_t>(size), L'\0');
    MultiByteToWideChar(CP_THREAD_ACP, 0, text, -1, wide.data(), size);
    wide.resize(static_cast<size_t>(size) - 1); // the terminating zero
    return wide;
}

std::string AnsiFromWide(const std::wstring& text) {
    const int size = WideCharToMultiByte(CP_THREAD_ACP, 0, text.c_str(), -1, nullptr, 0, nullptr, nullptr);
    if (size <= 0) {
        return {};
    }
    std::string ansi(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_THREAD_ACP, 0, text.c_str(), -1, ansi.data(), size, nullptr, nullptr);
    ansi.resize(static_cast<size_t>(size) - 1);
    return ansi;
}

} // namespace

std::vector<std::wstring> LanguageNames() {
    std::vector<std::wstring> names;
    names.reserve(languageCount());
    for (UINT32 index = 0; index < languageCount(); ++index) {
        names.push_back(WideFromAnsi(languageNameByIndex(index)));
    }
    return names;
}

UINT32 LanguagePosition(const std::wstring& name) {
    return languageIndexByName(AnsiFromWide(name).c_str());
}
