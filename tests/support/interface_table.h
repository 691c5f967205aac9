// InterfaceTable: what an interface's methods answer to callers that hand them nothing, rubbish, or come at the wrong
// time. The table knows the interface's declaration: a method without a row is a failure.
//
// Owner: the test. Threads: one. Errors: test failures that name interface, row and state.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "win/platform.h"

namespace test_support {

// How far the object is when it is called; each rig says what that means for its object.
enum class CallState { Fresh, Connected, Streaming };
inline constexpr CallState kCallStates[] = {CallState::Fresh, CallState::Connected, CallState::Streaming};

// The answers in the three states.
struct Answers {
    Answers(HRESULT always) : inState{always, always, always} {}
    Answers(HRESULT fresh, HRESULT connected, HRESULT streaming) : inState{fresh, connected, streaming} {}

    HRESULT inState[3];
};

// The place of a virtual method in its object's table of methods, as the compiler stores it in a pointer to the method:
// one more than its distance in bytes.
template <typename Method>
[[nodiscard]] size_t SlotOf(Method method) {
    struct {
        std::ptrdiff_t address;
        std::ptrdiff_t adjustment;
    } parts{};
    static_assert(sizeof(parts) == sizeof(method));
    std::memcpy(&parts, &method, sizeof(parts));
    EXPECT_EQ(1, parts.address % 2) << "not a virtual method";
    return static_cast<size_t>(parts.address - 1) / sizeof(void*);
}

// How many methods the interface declares: the place of one that is declared behind them all.
template <typename Interface>
[[nodiscard]] size_t SlotCount() {
    struct OneMore : Interface {
        virtual void Behind() = 0;
    };
    return SlotOf(&OneMore::Behind);
}

// An argument that is nothing: null, zero, the null GUID.
template <typename Argument>
[[nodiscard]] std::decay_t<Argument> Nothing() {
    return std::decay_t<Argument>{};
}

// For out-parameters that carry a reference: set to rubbish before the call, which has to set or to clear it.
template <typename Interface>
class OutReference {
  public:
    OutReference() = default;
    OutReference(const OutReference&) = delete;
    OutReference& operator=(const OutReference&) = delete;
    ~OutReference() {
        EXPECT_NE(Rubbish(), m_pointer) << "an out-parameter was left alone";
        if (m_pointer != nullptr && m_pointer != Rubbish()) {
            m_pointer->Release();
        }
    }
    operator Interface**() { return &m_pointer; }
    operator void**() { return reinterpret_cast<void**>(&m_pointer); }

  private:
    static Interface* Rubbish() {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): it is to be no pointer
        return reinterpret_cast<Interface*>(static_cast<UINT_PTR>(0x5b5b5b5b));
    }

    Interface* m_pointer = Rubbish();
};

// The same for a text that the caller frees.
class OutText {
  public:
    OutText() = default;
    OutText(const OutText&) = delete;
    OutText& operator=(const OutText&) = delete;
    ~OutText() {
        EXPECT_NE(m_rubbish, m_text) << "an out-parameter was left alone";
        if (m_text != m_rubbish) {
            CoTaskMemFree(m_text);
        }
    }
    operator LPWSTR*() { return &m_text; }

  private:
    WCHAR m_rubbish[1] = {};
    LPWSTR m_text = m_rubbish;
};

template <typename Interface>
class InterfaceTable {
  public:
    using Call = std::function<HRESULT(Interface&)>;
    // Calls the function with an object in that state.
    using Bring = std::function<void(CallState, const std::function<void(Interface&)>&)>;

    explicit InterfaceTable(std::string name) : m_name(std::move(name)) { AddUnknown(); }

    // The method called with nothing in every argument.
    template <typename Owner, typename... Arguments>
    InterfaceTable& Nulls(const char* method, HRESULT (STDMETHODCALLTYPE Owner::*pointer)(Arguments...),
                          Answers answers) {
        return Add(
            SlotOf(pointer), std::string(method) + " with nothing",
            [pointer](Interface& object) { return (object.*pointer)(Nothing<Arguments>()...); }, answers);
    }
    // The method called as the function does.
    template <typename Owner, typename... Arguments>
    InterfaceTable& With(const char* what, HRESULT (STDMETHODCALLTYPE Owner::*pointer)(Arguments...), Call call,
                         Answers answers) {
        return Add(SlotOf(pointer), what, std::move(call), answers);
    }

    [[nodiscard]] const std::string& Name() const { return m_name; }

    // Methods that the interface declares and the table does not have, and the other way round.
    [[nodiscard]] std::set<size_t> SlotsThatDiffer() const {
        std::set<size_t> differ;
        for (size_t slot = 0; slot < SlotCount<Interface>(); ++slot) {
            differ.insert(slot);
        }
        for (const Row& row : m_rows) {
            if (row.slot >= SlotCount<Interface>()) {
                differ.insert(row.slot);
            } else {
                differ.erase(row.slot);
            }
        }
        return differ;
    }

    // Each row on an object of its own, in each state.
    void Walk(const Bring& bring) const {
        EXPECT_EQ(std::set<size_t>(), SlotsThatDiffer()) << m_name << " has methods without a row";
        for (const CallState state : kCallStates) {
            for (const Row& row : m_rows) {
                SCOPED_TRACE(m_name + ": " + row.what + ", state " + std::to_string(static_cast<int>(state)));
                const HRESULT expected = row.answers.inState[static_cast<size_t>(state)];
                bool called = false;
                bring(state, [&](Interface& object) {
                    called = true;
                    const HRESULT answer = row.call(object);
                    EXPECT_EQ(expected, answer) << std::hex << static_cast<ULONG>(answer);
                });
                EXPECT_TRUE(called);
            }
        }
    }

  private:
    struct Row {
        size_t slot;
        std::string what;
        Call call;
        Answers answers;
    };

    InterfaceTable& Add(size_t slot, std::string what, Call call, Answers answers) {
        m_rows.push_back({slot, std::move(what), std::move(call), answers});
        return *this;
    }

    void AddUnknown() {
        using Query = HRESULT (STDMETHODCALLTYPE IUnknown::*)(REFIID, void**);
        const size_t query = SlotOf(static_cast<Query>(&IUnknown::QueryInterface));
        Add(
            query, "QueryInterface into nothing",
            [](Interface& object) { return object.QueryInterface(IID_IUnknown, static_cast<void**>(nullptr)); },
            E_POINTER);
        Add(
            query, "QueryInterface for an interface that nobody has",
            [](Interface& object) { return object.QueryInterface(GUID_NULL, OutReference<IUnknown>()); },
            E_NOINTERFACE);
        Add(
            query, "QueryInterface for IUnknown",
            [](Interface& object) { return object.QueryInterface(IID_IUnknown, OutReference<IUnknown>()); }, S_OK);
        const auto count = [](Interface& object) {
            const ULONG more = object.AddRef();
            const ULONG less = object.Release();
            return more == less + 1 && less > 0 ? S_OK : E_FAIL;
        };
        Add(SlotOf(&IUnknown::AddRef), "AddRef", count, S_OK);
        Add(SlotOf(&IUnknown::Release), "Release", count, S_OK);
    }

    std::string m_name;
    std::vector<Row> m_rows;
};

} // namespace test_support
