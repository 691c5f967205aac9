// StreamSinkPin: the input pin of a file sink over whatever stream a measurement gives it.
//
// Owner: the measurement; references are counted, none deletes it. The stream is not owned.
// Threads: connecting is for one thread; the end of the stream from the muxer's worker.
#pragma once

#include <condition_variable>
#include <mutex>

#include "tests/support/fake_allocator.h"
#include "tests/support/fake_pin.h"

namespace bench {

class StreamSinkPin final : public test_support::FakePin, public IMemInputPin {
  public:
    explicit StreamSinkPin(IStream& stream) : FakePin(PINDIR_INPUT, OLESTR("Sink"), {}), m_stream(stream) {}
    ~StreamSinkPin() { Unplug(); }

    void WaitForEndOfStream();

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        return FakePin::QueryInterface(iid, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return FakePin::AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return FakePin::Release(); }
    // IPin
    HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE EndOfStream() override;
    // IMemInputPin
    HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** allocator) override;
    HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator*, BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Receive(IMediaSample*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample**, LONG, LONG*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override { return S_FALSE; }

  private:
    [[nodiscard]] IUnknown* FindInterface(REFIID iid) override;

    IStream& m_stream;
    test_support::FakeAllocator m_allocator;
    std::mutex m_lock; // guards m_ended
    std::condition_variable m_changed;
    bool m_ended = false;
};

} // namespace bench
