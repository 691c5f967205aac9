#include "records/language_codes.h"

#include "records/language_lookup.h"
#include "records/language_table.h"

namespace records {

namespace {

constexpr size_t kCodeLength = 3;

} // namespace

LanguageCodes LanguageCodesOf(const WCHAR* text) {
    const UINT32 index = FindLanguage(text);
    if (index == kNoLanguageIndex) {
        return {"und", "und"};
    }
    const LanguageRow& row = LanguageRows()[index];
    const std::string code(row.code, kCodeLength); // of a pair, or of the range for local use, the first
    // Every language that has a code for terminology too has one of two letters, which goes before both.
    return {code, *row.twoLetterCode != 0 ? row.twoLetterCode : code};
}

} // namespace records
