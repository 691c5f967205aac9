// Whole files, replaced by others of the same name, rights and attributes.
//
// Units: bytes. Threads: any. Errors: false; std::bad_alloc.
#pragma once

#include <functional>
#include <string>

// Waits before another try, after so many that failed. False: no more tries.
using PauseBeforeTry = std::function<bool(int failures)>;

// A few milliseconds first, then longer; about two seconds in all.
[[nodiscard]] bool PauseBriefly(int failures);

// Whether ReplaceFileBytes may succeed: the file can be written, or made.
[[nodiscard]] bool IsReplaceable(const std::wstring& path);

// Writes a new file beside the old one, or beside the one that a link leads to, and moves it over that when it is
// complete: a reader sees the one or the other. While that is refused, because somebody has the old file open, it tries
// again; after the last try, and where there can be no new file beside it, the old one is written in place.
// Where the bytes have no room, the old file stays as it was.
[[nodiscard]] bool ReplaceFileBytes(const std::wstring& path, const std::string& bytes,
                                    const PauseBeforeTry& pause = PauseBriefly);
