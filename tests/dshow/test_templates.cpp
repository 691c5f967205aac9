#include "tests/dshow/test_templates.h"

#include <new>

#include "tests/dshow/test_filter.h"

namespace dshow_test {

Creation g_creation = Creation::Succeeds;
InitCalls g_initCalls;

namespace {

const AMOVIESETUP_MEDIATYPE kInputTypes[] = {{&MEDIATYPE_Video, &GUID_NULL}, {&MEDIATYPE_Audio, &GUID_NULL}};
const AMOVIESETUP_MEDIATYPE kOutputTypes[] = {{&MEDIATYPE_Stream, &GUID_NULL}};

// The record's names are not const, although nobody writes to them.
const AMOVIESETUP_PIN kPins[] = {
    {const_cast<LPWSTR>(OLESTR("Input")), FALSE, FALSE, FALSE, TRUE, &GUID_NULL, nullptr, 2, kInputTypes},
    {const_cast<LPWSTR>(OLESTR("Output")), FALSE, TRUE, FALSE, FALSE, &GUID_NULL, nullptr, 1, kOutputTypes}};

constexpr DWORD kDoNotUse = 0x200000; // merit

CUnknown* CreateFilter(LPUNKNOWN outer, HRESULT* /*phr*/) {
    return new TestFilter(outer);
}

CUnknown* CreatePlain(LPUNKNOWN outer, HRESULT* phr) {
    switch (g_creation) {
    case Creation::ReportsFailureWithoutObject:
        *phr = E_ACCESSDENIED;
        return nullptr;
    case Creation::GivesNothing:
        return nullptr;
    case Creation::ThrowsNoMemory:
        throw std::bad_alloc();
    case Creation::ReportsFailure:
        *phr = E_ACCESSDENIED;
        [[fallthrough]];
    case Creation::Succeeds:
        break;
    }
    return new CUnknown(OLESTR("plain"), outer);
}

void InitPlain(BOOL loading, const CLSID* clsid) {
    if (*clsid == kPlainClass) {
        ++(loading ? g_initCalls.loading : g_initCalls.unloading);
    }
}

} // namespace

const AMOVIESETUP_FILTER kFilterSetup = {&kFilterClass, OLESTR("Quorlex Test Filter"), kDoNotUse, 2, kPins};

} // namespace dshow_test

using namespace dshow_test;

CFactoryTemplate g_Templates[] = {
    {OLESTR("Quorlex Test Filter"), &kFilterClass, CreateFilter, nullptr, &kFilterSetup},
    {OLESTR("Quorlex Test Object"), &kPlainClass, CreatePlain, InitPlain, nullptr},
};
int g_cTemplates = 2;
