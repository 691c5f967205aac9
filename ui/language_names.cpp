#include "ui/language_names.h"

#include "records/language_lookup.h"
#include "records/language_table.h"

std::vector<std::wstring> LanguageNames() {
    std::vector<std::wstring> names;
    names.reserve(languageCount());
    for (UINT32 index = 0; index < languageCount(); ++index) {
        names.push_back(records::ShownLanguageName(index));
    }
    return names;
}

UINT32 LanguagePosition(const std::wstring& name) {
    return records::FindLanguage(name.c_str());
}
