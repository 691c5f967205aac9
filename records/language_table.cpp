#include "records/language_table.h"

#include <cstring>
#include <iterator>

namespace {

constexpr records::LanguageRow kRows[] = {
#include "records/language_rows.inc"
};

// A row that gets lost or doubled would move the positions that lists are filled by.
static_assert(std::size(kRows) == 566);

} // namespace

std::span<const records::LanguageRow> records::LanguageRows() noexcept {
    return kRows;
}

const char* languageCodeByName(const char* name) noexcept {
    const UINT32 index = languageIndexByName(name);
    return index == records::kNoLanguageIndex ? "" : kRows[index].code;
}

UINT32 languageIndexByName(const char* name) noexcept {
    if (name == nullptr) {
        return records::kNoLanguageIndex;
    }
    for (UINT32 index = 0; index < languageCount(); ++index) {
        if (std::strcmp(kRows[index].name, name) == 0) {
            return index;
        }
    }
    return records::kNoLanguageIndex;
}

const char* languageNameByIndex(UINT32 index) noexcept {
    return index < languageCount() ? kRows[index].name : nullptr;
}

UINT32 languageCount() noexcept {
    return static_cast<UINT32>(std::size(kRows));
}
