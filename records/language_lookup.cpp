#include "records/language_lookup.h"

#include "records/language_table.h"

namespace records {

namespace {

// Empty for a text that cannot be converted.
std::string ToAnsi(const WCHAR* text) {
    const int size = WideCharToMultiByte(CP_THREAD_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 1) {
        return {};
    }
    std::string ansi(static_cast<size_t>(size), '\0');
    if (WideCharToMultiByte(CP_THREAD_ACP, 0, text, -1, ansi.data(), size, nullptr, nullptr) != size) {
        return {};
    }
    ansi.pop_back(); // the terminator
    return ansi;
}

UINT32 FindShownName(const std::basic_string<WCHAR>& text) {
    for (UINT32 index = 0; index < languageCount(); ++index) {
        if (ShownLanguageName(index) == text) {
            return index;
        }
    }
    return kNoLanguageIndex;
}

} // namespace

std::basic_string<WCHAR> ShownLanguageName(UINT32 index) {
    const char* const name = languageNameByIndex(index);
    const int size = name != nullptr ? MultiByteToWideChar(CP_THREAD_ACP, 0, name, -1, nullptr, 0) : 0;
    if (size <= 0) {
        return {};
    }
    std::basic_string<WCHAR> wide(static_cast<size_t>(size), 0);
    MultiByteToWideChar(CP_THREAD_ACP, 0, name, -1, wide.data(), size);
    wide.pop_back(); // the terminator
    return wide;
}

UINT32 FindLanguage(const WCHAR* text) {
    if (text == nullptr || *text == 0) {
        return kNoLanguageIndex;
    }
    const UINT32 index = languageIndexByName(ToAnsi(text).c_str());
    return index != kNoLanguageIndex ? index : FindShownName(text);
}

std::string LanguageCodeOf(const WCHAR* text) {
    const UINT32 index = FindLanguage(text);
    return index == kNoLanguageIndex ? std::string() : LanguageRows()[index].code;
}

} // namespace records
