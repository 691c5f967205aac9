#include "mkvmux/language_spelling.h"

#include "mkvmux/text.h"
#include "records/language_lookup.h"
#include "records/language_table.h"
#include "win/code_page_text.h"

namespace mkvmux {

namespace {

// The row's name as it reads in the thread's code page; nothing when the muxer takes that for another language.
std::optional<std::wstring> SpellingOfRow(UINT32 index) {
    std::wstring spelling = records::ShownLanguageName(index);
    return CodeWrittenFor(spelling) == records::LanguageRows()[index].code ? std::optional(std::move(spelling))
                                                                           : std::nullopt;
}

} // namespace

std::optional<std::wstring> SpellingForMuxer(std::wstring_view name) {
    for (UINT32 index = 0; index < languageCount(); ++index) {
        if (win::WideFromNarrow(kListCodePage, languageNameByIndex(index)) == name) {
            return SpellingOfRow(index);
        }
    }
    return {};
}

std::string CodeWrittenFor(std::wstring_view spelling) {
    return records::LanguageCodeOf(std::wstring(spelling).c_str());
}

} // namespace mkvmux
