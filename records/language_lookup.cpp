#include "records/language_lookup.h"

#include "records/language_table.h"
#include "win/code_page_text.h"

namespace records {

namespace {

UINT32 FindShownName(const WideString& text) {
    for (UINT32 index = 0; index < languageCount(); ++index) {
        if (ShownLanguageName(index) == text) {
            return index;
        }
    }
    return kNoLanguageIndex;
}

} // namespace

WideString ShownLanguageName(UINT32 index) {
    const char* const name = languageNameByIndex(index);
    return name == nullptr ? WideString() : win::WideFromNarrow(CP_THREAD_ACP, name);
}

UINT32 FindLanguage(const WCHAR* text) {
    if (text == nullptr || *text == 0) {
        return kNoLanguageIndex;
    }
    const UINT32 index = languageIndexByName(win::NarrowFromWide(CP_THREAD_ACP, text).c_str());
    return index != kNoLanguageIndex ? index : FindShownName(text);
}

std::string LanguageCodeOf(const WCHAR* text) {
    const UINT32 index = FindLanguage(text);
    return index == kNoLanguageIndex ? std::string() : LanguageRows()[index].code;
}

} // namespace records
