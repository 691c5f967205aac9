// Pins of strangers that say that they have an interface and hand out none.
#include <gtest/gtest.h>

#include "tests/matroska_muxer/muxer_rig.h"
#include "tests/support/pin_lookup.h"

using namespace test_support;

namespace {

// A sink that answers S_OK and nothing for one interface, from when it is told to.
class LyingSinkPin final : public FakeSinkPin {
  public:
    void LieAbout(REFIID iid) { m_lie = iid; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (iid == m_lie) {
            *object = nullptr;
            return S_OK;
        }
        return FakeSinkPin::QueryInterface(iid, object);
    }

  private:
    IID m_lie{};
};

class ForeignPin : public ::testing::Test {
  protected:
    [[nodiscard]] win::ComPtr<IPin> Output() const { return PinNamed(m_rig.Filter(), OLESTR("Out")); }
    HRESULT Connect() { return Output()->Connect(&m_sink, nullptr); }

    LyingSinkPin m_sink;
    MuxerRig m_rig;
};

TEST_F(ForeignPin, ASinkWithoutTheInputThatItPromisesIsRefused) {
    m_sink.LieAbout(IID_IMemInputPin);
    EXPECT_EQ(E_NOINTERFACE, Connect());
    win::ComPtr<IPin> peer;
    EXPECT_EQ(VFW_E_NOT_CONNECTED, Output()->ConnectedTo(peer.Put()));
}

TEST_F(ForeignPin, ASinkWithoutTheStreamThatItPromisesIsRefused) {
    m_sink.LieAbout(IID_IStream);
    EXPECT_EQ(VFW_E_NO_ACCEPTABLE_TYPES, Connect()) << "as one that has none";
}

TEST_F(ForeignPin, ASinkThatHidesItsInputLaterMayBlock) {
    ASSERT_EQ(S_OK, Connect());
    m_sink.LieAbout(IID_IMemInputPin);
    const auto input = PinNamed(m_rig.Filter(), OLESTR("In 0")).Query<IMemInputPin>(IID_IMemInputPin);
    EXPECT_EQ(S_OK, input->ReceiveCanBlock());
    m_sink.Unplug();
}

TEST_F(ForeignPin, ASinkThatHidesItsStreamLaterMakesTheRunGoOnWithoutAFile) {
    ASSERT_EQ(S_OK, Connect());
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    m_sink.LieAbout(IID_IStream);
    EXPECT_EQ(S_OK, m_rig.Pause());
    EXPECT_EQ(S_OK, m_rig.Deliver(0, 0, 10));
    EXPECT_EQ(S_OK, m_rig.Stop());
    EXPECT_TRUE(m_sink.Stream().Bytes().empty());
    m_sink.Unplug();
}

} // namespace
