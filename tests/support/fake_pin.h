// FakePin: what the fake pins of both directions share, written by hand from the documentation of IPin and with
// no base class of the system under test, so that it is an independent witness.
//
// Owner: the test; references are counted, none deletes it. Threads: connecting is for one thread.
// Errors: as documented for IPin.
#pragma once

#include <vector>

#include "tests/support/fake_filter.h"
#include "tests/support/media_type_value.h"
#include "tests/support/reference_count.h"
#include "win/com_ptr.h"
#include "win/platform.h"
#include "win/wide_string.h"

namespace test_support {

class FakePin : public IPin {
  public:
    FakePin(PIN_DIRECTION direction, WideString name, std::vector<MediaTypeValue> types);
    FakePin(const FakePin&) = delete;
    FakePin& operator=(const FakePin&) = delete;

    [[nodiscard]] FakeFilter& Filter() { return m_filter; }
    [[nodiscard]] IPin* Peer() const { return m_peer.Get(); } // null when not connected
    [[nodiscard]] const MediaTypeValue& ConnectedType() const { return m_connectedType; }
    [[nodiscard]] LONG References() const { return m_references.Count(); }
    // Disconnects both ends, as a graph does; nothing when not connected.
    void Unplug();

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.Add(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_references.Release(); }
    // IPin
    HRESULT STDMETHODCALLTYPE Connect(IPin* receiver, const AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE Disconnect() override;
    HRESULT STDMETHODCALLTYPE ConnectedTo(IPin** pin) override;
    HRESULT STDMETHODCALLTYPE ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE QueryPinInfo(PIN_INFO* info) override;
    HRESULT STDMETHODCALLTYPE QueryDirection(PIN_DIRECTION* direction) override;
    HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* id) override;
    HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** types) override;
    HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** pins, ULONG* count) override;
    HRESULT STDMETHODCALLTYPE EndOfStream() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE BeginFlush() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE EndFlush() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

  protected:
    ~FakePin() = default; // deleted only as what it is

    // The interface asked for, without a reference, or null.
    [[nodiscard]] virtual IUnknown* FindInterface(REFIID iid) = 0;
    // Called when the connection stands, and when it ends. A failure of OnConnected undoes the connection.
    [[nodiscard]] virtual HRESULT OnConnected() { return S_OK; }
    virtual void OnDisconnected() {}

    void SetPeer(IPin* peer, const AM_MEDIA_TYPE& type);
    void ClearPeer();
    [[nodiscard]] const std::vector<MediaTypeValue>& Types() const { return m_types; }

  private:
    const PIN_DIRECTION m_direction;
    const WideString m_name;
    const std::vector<MediaTypeValue> m_types;
    ReferenceCount m_references{"a fake pin"};
    FakeFilter m_filter{this};
    win::ComPtr<IPin> m_peer;
    MediaTypeValue m_connectedType;
};

} // namespace test_support
