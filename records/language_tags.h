// The codes of a language that an application names as it likes: by a tag of BCP 47, by a code of ISO 639, or by its
// English name, as rows of tracks have it.
//
// Threads: any; the code page is the calling one's, for names alone. Errors: std::bad_alloc.
#pragma once

#include <optional>

#include "records/language_codes.h"
#include "win/wide_string.h"

namespace records {

// Of a tag, the language's part is as short as there is one ("ger-AT" is "de-AT"), and one that is in no list has the
// bibliographic code "und". "und" for both of an empty text. None for what is neither a tag nor a name of the list.
[[nodiscard]] std::optional<LanguageCodes> FindLanguageCodes(const WideString& text);

} // namespace records
