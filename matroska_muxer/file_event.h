// FileEvent: what the graph is to be told of the files of a run.
#pragma once

#include "win/platform.h"

struct FileEvent {
    LONG code = 0; // a MuxEvent
    LONG_PTR first = 0;
    LONG_PTR second = 0;
};
