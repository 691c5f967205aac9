#include "win/module_instance.h"

namespace win {

namespace {

HINSTANCE g_instance = nullptr;

} // namespace

void SetModuleInstance(HINSTANCE instance) {
    g_instance = instance;
}

HINSTANCE ModuleInstance() {
    return g_instance;
}

} // namespace win
