// Where a property page can be seen.
#pragma once

#include "win/platform.h"

// A page posts this to itself when it is sized: a frame may give its own window another size right after the page's.
inline constexpr UINT kFrameHasSettled = WM_APP + 1;

// Whether the page must lay itself out anew; a size posts the message above.
[[nodiscard]] bool IsLayoutMessage(HWND page, UINT message);

// The page's client area as far as its parent shows it: some frames give a page more room than they have.
[[nodiscard]] RECT VisibleAreaOf(HWND page);
