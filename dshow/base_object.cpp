#include "dshow/base_object.h"

#include <atomic>

namespace {

std::atomic<LONG> g_objects{0};

} // namespace

CBaseObject::CBaseObject(const WCHAR* /*name*/) noexcept {
    ++g_objects;
}

CBaseObject::~CBaseObject() {
    --g_objects;
}

LONG CBaseObject::ObjectsActive() noexcept {
    return g_objects;
}
