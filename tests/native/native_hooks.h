// What a test may ask of the Linux lane, or make it answer. Only programs of that lane include this.
//
// Owner: state of the whole process; the Scoped… classes put back what they changed.
// Threads: any, but one test at a time changes the answers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "win/platform.h"

namespace native {

// ---- What is still held ---------------------------------------------------------------------------------------

// Handles of events, threads and files that nobody has closed yet.
[[nodiscard]] size_t OpenHandleCount();
// Calls that were given a handle which is not open: closed twice, used after closing, never opened.
[[nodiscard]] size_t BadHandleCount();
// Critical sections that are initialised and not deleted.
[[nodiscard]] size_t LiveCriticalSectionCount();
// Balance of CoInitializeEx and CoUninitialize, over all threads.
[[nodiscard]] int ComInitializations();

// ---- What would have gone to the kernel -----------------------------------------------------------------------

struct KernelCalls {
    std::uint64_t creates = 0;   // CreateEvent, CreateThread
    std::uint64_t sets = 0;      // SetEvent
    std::uint64_t resets = 0;    // ResetEvent
    std::uint64_t waits = 0;     // WaitFor…Object(s), also those that return at once
    std::uint64_t contended = 0; // EnterCriticalSection that found another thread inside
    std::uint64_t sleeps = 0;    // Sleep

    [[nodiscard]] std::uint64_t Total() const { return creates + sets + resets + waits + contended + sleeps; }
};

// Counts since the program began.
[[nodiscard]] KernelCalls CountedKernelCalls();
KernelCalls operator-(const KernelCalls& later, const KernelCalls& earlier);

// ---- Time -----------------------------------------------------------------------------------------------------

// While it lives, GetTickCount, GetTickCount64 and timeGetTime stand still at a chosen value. Waits and Sleep keep
// real time.
class ScopedTickCount {
  public:
    explicit ScopedTickCount(std::uint64_t milliseconds);
    ~ScopedTickCount();
    ScopedTickCount(const ScopedTickCount&) = delete;
    ScopedTickCount& operator=(const ScopedTickCount&) = delete;

    void Set(std::uint64_t milliseconds);
    void Advance(std::uint64_t milliseconds);
};

// ---- Memory ---------------------------------------------------------------------------------------------------

// While it lives, the nth allocation from now (1 is the next) through CoTaskMemAlloc, CoTaskMemRealloc or
// SysAllocString… fails, and with `forever` all that follow.
class ScopedAllocationFailure {
  public:
    explicit ScopedAllocationFailure(int nth, bool forever = false);
    ~ScopedAllocationFailure();
    ScopedAllocationFailure(const ScopedAllocationFailure&) = delete;
    ScopedAllocationFailure& operator=(const ScopedAllocationFailure&) = delete;
};

// ---- COM classes ----------------------------------------------------------------------------------------------

// As IClassFactory::CreateInstance; `outer` is the aggregating object or null.
using CreateClass = std::function<HRESULT(IUnknown* outer, REFIID iid, void** object)>;

// While it lives, CoCreateInstance finds the class; without it the answer is REGDB_E_CLASSNOTREG.
class ScopedClass {
  public:
    ScopedClass(REFCLSID clsid, CreateClass create);
    ~ScopedClass();
    ScopedClass(const ScopedClass&) = delete;
    ScopedClass& operator=(const ScopedClass&) = delete;

  private:
    CLSID m_clsid;
};

// ---- The module's resources -----------------------------------------------------------------------------------

// From now on the module's string table holds the text under that identifier.
void SetStringResource(UINT id, std::basic_string_view<WCHAR> text);

// The same, for as long as it lives.
class ScopedString {
  public:
    ScopedString(UINT id, std::basic_string_view<WCHAR> text);
    ~ScopedString();
    ScopedString(const ScopedString&) = delete;
    ScopedString& operator=(const ScopedString&) = delete;

  private:
    UINT m_id;
};

// While it lives, the module has a resource of that integer type and name with these bytes (RT_VERSION is 16).
class ScopedResource {
  public:
    ScopedResource(WORD type, WORD name, const void* bytes, size_t size);
    ~ScopedResource();
    ScopedResource(const ScopedResource&) = delete;
    ScopedResource& operator=(const ScopedResource&) = delete;

  private:
    WORD m_type;
    WORD m_name;
};

} // namespace native
