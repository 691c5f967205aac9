// Events, and waits on one or several objects.
#include <algorithm>
#include <chrono>
#include <vector>

#include "tests/native/kernel_object.h"
#include "tests/native/memory.h"
#include "tests/support/system_code.h"

namespace {

using native::Count;
using native::Kernel;
using native::KernelCall;
using native::KernelObject;
using Objects = std::vector<std::shared_ptr<KernelObject>>;

class Event : public KernelObject {
  public:
    Event(bool manualReset, bool signaled) : m_manualReset(manualReset), m_signaled(signaled) {}

    [[nodiscard]] bool IsSignaled() const override { return m_signaled; }
    void OnWaitSatisfied() override { m_signaled = m_signaled && m_manualReset; }
    void Signal(bool signaled) { m_signaled = signaled; }

  private:
    const bool m_manualReset;
    bool m_signaled;
};

BOOL SignalEvent(HANDLE handle, bool signaled) {
    const auto event = Kernel::Instance().FindAs<Event>(handle);
    if (!event) {
        return FALSE;
    }
    {
        const std::lock_guard lock(Kernel::Instance().mutex);
        event->Signal(signaled);
    }
    if (signaled) {
        Kernel::Instance().changed.notify_all();
    }
    return TRUE;
}

// The objects behind the handles; empty, with the last error set, when one of them cannot be waited for.
Objects FindAll(DWORD count, const HANDLE* handles) {
    Objects objects;
    if (count == 0 || count > MAXIMUM_WAIT_OBJECTS || handles == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return objects;
    }
    for (DWORD i = 0; i < count; ++i) {
        auto object = Kernel::Instance().Find(handles[i]);
        if (!object) {
            return {};
        }
        objects.push_back(std::move(object));
    }
    return objects;
}

// Takes the signal of the first signaled object, or of all of them; the result is the index, or WAIT_TIMEOUT.
DWORD TakeSignal(const Objects& objects, bool all) {
    const auto signaled = [](const auto& object) { return object->IsSignaled(); };
    const auto first = std::find_if(objects.begin(), objects.end(), signaled);
    if (first == objects.end() || (all && !std::all_of(objects.begin(), objects.end(), signaled))) {
        return WAIT_TIMEOUT;
    }
    if (!all) {
        (*first)->OnWaitSatisfied();
        return static_cast<DWORD>(first - objects.begin());
    }
    for (const auto& object : objects) {
        object->OnWaitSatisfied();
    }
    return WAIT_OBJECT_0;
}

DWORD WaitFor(const Objects& objects, bool all, DWORD milliseconds) {
    Kernel& kernel = Kernel::Instance();
    DWORD result = WAIT_TIMEOUT;
    const auto taken = [&] {
        result = TakeSignal(objects, all);
        return result != WAIT_TIMEOUT;
    };
    std::unique_lock lock(kernel.mutex);
    if (milliseconds == INFINITE) {
        kernel.changed.wait(lock, taken);
    } else {
        kernel.changed.wait_until(lock, std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds),
                                  taken);
    }
    return result;
}

} // namespace

HANDLE WINAPI CreateEventW(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL initialState, LPCWSTR name) {
    Count(KernelCall::Create);
    if (name != nullptr) { // events shared between processes are not part of the lane
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    if (!native::HasMemoryForObject()) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const test_support::SystemCode notTheProduct;
    return Kernel::Instance().Add(std::make_shared<Event>(manualReset != FALSE, initialState != FALSE));
}

BOOL WINAPI SetEvent(HANDLE handle) {
    Count(KernelCall::Set);
    return SignalEvent(handle, true);
}

BOOL WINAPI ResetEvent(HANDLE handle) {
    Count(KernelCall::Reset);
    return SignalEvent(handle, false);
}

DWORD WINAPI WaitForMultipleObjectsEx(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds, BOOL) {
    Count(KernelCall::Wait);
    const test_support::SystemCode notTheProduct;
    const Objects objects = FindAll(count, handles);
    return objects.empty() ? WAIT_FAILED : WaitFor(objects, all != FALSE, milliseconds);
}

DWORD WINAPI WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) {
    return WaitForMultipleObjectsEx(count, handles, all, milliseconds, FALSE);
}

DWORD WINAPI WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    return WaitForMultipleObjectsEx(1, &handle, FALSE, milliseconds, FALSE);
}

DWORD WINAPI WaitForSingleObjectEx(HANDLE handle, DWORD milliseconds, BOOL alertable) {
    return WaitForMultipleObjectsEx(1, &handle, FALSE, milliseconds, alertable);
}
