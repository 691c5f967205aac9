// CallerRig: a filter with an input and an output in one of the three states in which strangers call it: fresh, with
// both pins connected, and streaming.
//
// Owner: the test. Threads: one. Errors: a rig that cannot be made fails the running test.
#pragma once

#include "tests/matroska_muxer/muxer_rig.h"
#include "tests/support/interface_table.h"
#include "tests/support/pin_lookup.h"

class CallerRig : public MuxerRig {
  public:
    explicit CallerRig(test_support::CallState state) {
        if (state == test_support::CallState::Fresh) {
            return;
        }
        EXPECT_EQ(S_OK, ConnectOutput());
        EXPECT_EQ(S_OK, ConnectInput(test_support::VideoInfoType(mediasubtype::kVp8)));
        if (state == test_support::CallState::Streaming) {
            EXPECT_EQ(S_OK, Pause());
        }
    }

    // The filter itself, for its own interfaces.
    [[nodiscard]] win::ComPtr<IUnknown> FilterObject() const { return Filter(); }
    [[nodiscard]] win::ComPtr<IUnknown> InputObject() const { return Pin(OLESTR("In 0")); }
    [[nodiscard]] win::ComPtr<IUnknown> OutputObject() const { return Pin(OLESTR("Out")); }

  private:
    [[nodiscard]] win::ComPtr<IUnknown> Pin(const WCHAR* name) const {
        return test_support::PinNamed(Filter(), name).Get();
    }
};

// How a table's objects come: those of the rig, asked for the interface.
template <typename Interface, typename Object>
typename test_support::InterfaceTable<Interface>::Bring FromRig(REFIID iid, Object object) {
    return [iid, object](test_support::CallState state, const std::function<void(Interface&)>& call) {
        const CallerRig rig(state);
        const win::ComPtr<Interface> asked = (rig.*object)().template Query<Interface>(iid);
        ASSERT_TRUE(asked);
        call(*asked.Get());
    };
}
