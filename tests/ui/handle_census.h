// HandleCensus: how many GDI objects and user objects this process holds.
//
// Where the system does not count them (GetGuiResources answers 0), GDI objects are counted in the table that every
// process maps, and of the user objects windows and menus, by asking of each number whether it is one.
#pragma once

#include <cstddef>

namespace ui_test {

struct HandleCensus {
    size_t gdiObjects = 0;
    size_t userObjects = 0;

    static HandleCensus Take();
};

} // namespace ui_test
