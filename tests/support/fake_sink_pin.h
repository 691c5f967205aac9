// FakeSinkPin: the input pin of a small file sink; offers a MemoryStream as its IStream, another stream, or none.
//
// Owner: the test; references are counted, none deletes it. Another stream is not owned.
// Threads: connecting is for one thread; the rest any. Errors: as set.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

#include "tests/support/fake_allocator.h"
#include "tests/support/fake_pin.h"
#include "tests/support/memory_stream.h"

namespace test_support {

class FakeSinkPin : public FakePin, public IMemInputPin {
  public:
    enum class StreamOffer { Offered, None };

    // What arrived from upstream, counted.
    struct Received {
        int samples = 0;
        int endsOfStream = 0;
        int beginFlushes = 0;
        int endFlushes = 0;
        int newSegments = 0;
    };

    explicit FakeSinkPin(StreamOffer offer = StreamOffer::Offered);
    explicit FakeSinkPin(IStream& stream);
    ~FakeSinkPin() { Unplug(); }

    [[nodiscard]] MemoryStream& Stream() { return m_stream; }
    // Called whenever somebody asks for the stream.
    void OnStreamAsked(std::function<void()> asked) { m_streamAsked = std::move(asked); }
    // Called at each end of stream, before it is counted; what this throws leaves EndOfStream.
    void OnEndOfStream(std::function<void()> ended) { m_ended = std::move(ended); }
    [[nodiscard]] FakeAllocator& Allocator() { return m_allocator; }
    // The type that ReceiveConnection took is refused with this answer instead.
    void RefuseConnection(HRESULT result) { m_connectionResult = result; }
    // GetAllocator answers VFW_E_NO_ALLOCATOR.
    void OfferNoAllocator() { m_offersAllocator = false; }
    // What upstream decided on in NotifyAllocator; null before.
    [[nodiscard]] IMemAllocator* NotifiedAllocator() const { return m_notified.Get(); }

    [[nodiscard]] Received Counts() const;
    // Waits until so many ends of stream have arrived, those of all runs together; false when the time is over.
    [[nodiscard]] bool WaitForEndOfStream(std::chrono::milliseconds timeout, int count = 1) const;

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
    HRESULT STDMETHODCALLTYPE BeginFlush() override;
    HRESULT STDMETHODCALLTYPE EndFlush() override;
    HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;
    // IMemInputPin
    HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** allocator) override;
    HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override;
    HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override;
    HRESULT STDMETHODCALLTYPE Receive(IMediaSample* sample) override;
    HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample** samples, LONG count, LONG* processed) override;
    HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override { return S_FALSE; }

  private:
    [[nodiscard]] IUnknown* FindInterface(REFIID iid) override;
    void OnDisconnected() override;
    void CountOne(int Received::*counter);

    HRESULT m_connectionResult = S_OK;
    bool m_offersAllocator = true;
    std::function<void()> m_streamAsked = [] {};
    std::function<void()> m_ended = [] {};
    FakeAllocator m_allocator;
    MemoryStream m_stream{static_cast<IPin*>(this)};
    IStream* const m_offered; // null: none
    win::ComPtr<IMemAllocator> m_notified;

    mutable std::mutex m_lock; // guards m_received
    mutable std::condition_variable m_changed;
    Received m_received;
};

} // namespace test_support
