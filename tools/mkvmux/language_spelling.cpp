#include "tools/mkvmux/language_spelling.h"

#include <cstring>

#include "mkv/language_table.h"
#include "tools/mkvmux/text.h"

namespace mkvmux {

namespace {

// As the muxer narrows a row's language.
std::string Narrow(std::wstring_view text) {
    const int chars = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_THREAD_ACP, 0, text.data(), chars, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_THREAD_ACP, 0, text.data(), chars, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

// The text that gives these bytes; nothing when the code page has no character for some of them.
std::optional<std::wstring> TextOfBytes(const char* bytes) {
    std::wstring text = WideFromCodePage(CP_THREAD_ACP, bytes);
    return Narrow(text) == bytes ? std::optional(std::move(text)) : std::nullopt;
}

} // namespace

std::optional<std::wstring> SpellingForMuxer(std::wstring_view name) {
    const char* code = nullptr;
    for (const LanguageRow& row : languageRows()) {
        if (WideFromCodePage(kListCodePage, row.name) != name) {
            continue;
        }
        if (auto spelling = TextOfBytes(row.name)) {
            return spelling;
        }
        code = row.code;
        break;
    }
    for (const LanguageRow& row : languageRows()) {
        if (code != nullptr && std::strcmp(row.code, code) == 0) {
            if (auto spelling = TextOfBytes(row.name)) {
                return spelling;
            }
        }
    }
    return {};
}

std::string CodeWrittenFor(std::wstring_view spelling) {
    return languageCodeByName(Narrow(spelling).c_str());
}

void UseCodePageOfTheList() {
    SetThreadLocale(MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), SORT_DEFAULT));
}

} // namespace mkvmux
