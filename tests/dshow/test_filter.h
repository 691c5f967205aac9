// TestFilter: a filter made from the base classes, whose pins answer every hook as the test says.
//
// Owner: its references. Threads: as the base classes. Errors: as set in the pins' scripts.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "dshow/base_input_pin.h"
#include "dshow/base_output_pin.h"
#include "tests/support/fake_allocator.h"
#include "win/com_ptr.h"

namespace dshow_test {

using HookCalls = std::vector<std::string>;

// What the hooks of one pin answer, and which of them were called. S_OK stands for the base class's own answer.
struct PinScript {
    HRESULT checkConnect = S_OK;
    HRESULT setMediaType = S_OK;
    HRESULT completeConnect = S_OK;
    HRESULT breakConnect = S_OK;
    HRESULT active = S_OK;
    HRESULT inactive = S_OK;
    HRESULT run = S_OK;
    std::function<HRESULT(const CMediaType&)> checkMediaType = [](const CMediaType&) { return S_OK; };
    std::vector<CMediaType> types; // proposed by GetMediaType
    HookCalls calls;
};

template <typename Base>
class ScriptedPin : public Base {
  public:
    using Base::Base;

    PinScript script;

    HRESULT CheckConnect(IPin* pin) override {
        script.calls.emplace_back("CheckConnect");
        return script.checkConnect != S_OK ? script.checkConnect : Base::CheckConnect(pin);
    }
    HRESULT CheckMediaType(const CMediaType* type) override {
        script.calls.emplace_back("CheckMediaType");
        return script.checkMediaType(*type);
    }
    HRESULT SetMediaType(const CMediaType* type) override {
        script.calls.emplace_back("SetMediaType");
        return script.setMediaType != S_OK ? script.setMediaType : Base::SetMediaType(type);
    }
    HRESULT CompleteConnect(IPin* pin) override {
        script.calls.emplace_back("CompleteConnect");
        return script.completeConnect != S_OK ? script.completeConnect : Base::CompleteConnect(pin);
    }
    HRESULT BreakConnect() override {
        script.calls.emplace_back("BreakConnect");
        return script.breakConnect != S_OK ? script.breakConnect : Base::BreakConnect();
    }
    HRESULT Active() override {
        script.calls.emplace_back("Active");
        return script.active != S_OK ? script.active : Base::Active();
    }
    HRESULT Inactive() override {
        script.calls.emplace_back("Inactive");
        return script.inactive != S_OK ? script.inactive : Base::Inactive();
    }
    HRESULT Run(REFERENCE_TIME start) override {
        script.calls.emplace_back("Run");
        return script.run != S_OK ? script.run : Base::Run(start);
    }
    HRESULT GetMediaType(int position, CMediaType* type) override {
        if (position < 0) {
            return E_INVALIDARG;
        }
        const auto index = static_cast<size_t>(position);
        if (index >= script.types.size()) {
            return VFW_S_NO_MORE_ITEMS;
        }
        *type = script.types[index];
        return S_OK;
    }
    void TryMyTypesFirst() { this->m_bTryMyTypesFirst = true; }
    size_t CountCalls(const std::string& name) const {
        return static_cast<size_t>(std::count(script.calls.begin(), script.calls.end(), name));
    }
};

// Takes samples as the base class does, and counts the ends of stream.
class TestInputPin : public ScriptedPin<CBaseInputPin> {
  public:
    using ScriptedPin::ScriptedPin;

    STDMETHODIMP EndOfStream() noexcept override {
        ++endsOfStream;
        return CBaseInputPin::EndOfStream();
    }
    IMemAllocator* Allocator() const { return m_pAllocator.Get(); }

    int endsOfStream = 0;
};

// Negotiates with an allocator of its own in place of the system's.
class TestOutputPin : public ScriptedPin<CBaseOutputPin> {
  public:
    using ScriptedPin::ScriptedPin;

    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;
    HRESULT InitAllocator(IMemAllocator** allocator) override;
    IMemAllocator* Allocator() const { return m_pAllocator.Get(); }

    test_support::FakeAllocator ownAllocator;
    HRESULT initAllocator = S_OK;
    std::vector<ALLOCATOR_PROPERTIES> wishes; // as DecideBufferSize was given them
};

class TestFilter : public CBaseFilter {
  public:
    static constexpr CLSID kClassId{0x5b0c4a11, 0x7a51, 0x4c0e, {0x9d, 0x0a, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66}};

    explicit TestFilter(IUnknown* outer = nullptr);
    ~TestFilter() override;

    TestInputPin& AddInput(const WCHAR* name = OLESTR("In"));
    TestOutputPin& AddOutput(const WCHAR* name = OLESTR("Out"));

    int GetPinCount() override { return static_cast<int>(m_pins.size()); }
    CBasePin* GetPin(int n) override;
    const AMOVIESETUP_FILTER* GetSetupData() override { return setup; }

    const AMOVIESETUP_FILTER* setup = nullptr;
    bool throwOnGetPin = false;

  private:
    CCritSec m_lock;
    std::vector<std::unique_ptr<CBasePin>> m_pins;
};

using FilterPtr = win::ComPtr<TestFilter>;
inline FilterPtr MakeFilter() {
    return FilterPtr(new TestFilter); // its last reference deletes it
}

// A fully specified type that differs from others by its tag and a format block of one byte.
CMediaType TypeWithTag(BYTE tag);
// The type of an output that goes to a file sink.
CMediaType StreamType();
BYTE TagOf(const CMediaType& type);

} // namespace dshow_test
