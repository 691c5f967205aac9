#include "mkv/mkv_cues.h"

void CMkvCues::rollBackTo(size_t count) noexcept {
    forgetPending();
    auto& points = GetElementList();
    while (points.size() > count) {
        delete points.back(); // the list owns its elements through plain pointers
        points.pop_back();
    }
}
