// Section paths and keys as they address elements of a settings document.
//
// Paths are chains of element names, each with a '/' in front: "/preferences/section/key". What is not such a chain
// never reaches a query. Threads: any. Errors: nothing, for a path that cannot be one.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The prefix and the section, with '\' as '/' and blanks as '_'; no '/' at the end.
[[nodiscard]] std::optional<std::wstring> EffectiveSectionPath(std::wstring_view prefix, const std::wstring& section);

// The path of a value below its section's, with blanks as '_' and without a '/' in front of the key.
[[nodiscard]] std::optional<std::wstring> ValuePath(const std::wstring& sectionPath, const std::wstring& key);

[[nodiscard]] std::vector<std::wstring> ElementNames(std::wstring_view path);
