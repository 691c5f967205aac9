// CollectingFilter: takes the samples of one pin and keeps copies of them.
//
// Units: times in 100 ns. Threads: Samples and WaitForEnd any.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "dshow/base_filter.h"
#include "dshow/base_input_pin.h"
#include "win/com_ptr.h"

namespace test_source {

struct CollectedSample {
    std::string data;
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    bool keyframe = false;
};

class CollectingPin final : public CBaseInputPin {
  public:
    CollectingPin(CBaseFilter* filter, CCritSec* lock, HRESULT* phr);

    // Offers that allocator instead of the system's.
    void OfferAllocator(IMemAllocator* allocator) { m_offered = win::ComPtr<IMemAllocator>(allocator); }
    // Refuses every other one.
    void InsistOnOffer() { m_insists = true; }
    // The one agreed on.
    [[nodiscard]] IMemAllocator* Agreed() const { return m_agreed.Get(); }
    void ForgetAgreed() { m_agreed.Reset(); }
    // Takes so many samples, then refuses with S_FALSE as a stopped peer does.
    void TakeAtMost(size_t samples) { m_most = samples; }
    // Holds a reference on every sample from now on, as a renderer may.
    void KeepSamples() { m_keeps = true; }
    void ReleaseSamples();
    [[nodiscard]] bool WaitForSamples(size_t count, std::chrono::seconds timeout) const;
    [[nodiscard]] std::vector<CollectedSample> Samples() const;
    [[nodiscard]] bool WaitForEnd(std::chrono::seconds timeout) const;

    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    STDMETHODIMP GetAllocator(IMemAllocator** allocator) noexcept override;
    STDMETHODIMP NotifyAllocator(IMemAllocator* allocator, BOOL isReadOnly) noexcept override;
    STDMETHODIMP Receive(IMediaSample* sample) noexcept override;
    STDMETHODIMP EndOfStream() noexcept override;

  private:
    win::ComPtr<IMemAllocator> m_offered;
    win::ComPtr<IMemAllocator> m_agreed;
    bool m_insists = false;
    size_t m_most = SIZE_MAX;
    bool m_keeps = false;
    mutable std::mutex m_mutex; // guards what follows
    mutable std::condition_variable m_changed;
    std::vector<CollectedSample> m_samples;
    std::vector<win::ComPtr<IMediaSample>> m_kept;
    bool m_ended = false;
};

class CollectingFilter final : public CBaseFilter {
  public:
    explicit CollectingFilter(HRESULT* phr);

    [[nodiscard]] CollectingPin& Pin() { return m_pin; }
    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int index) override { return index == 0 ? &m_pin : nullptr; }

  private:
    CCritSec m_lock;
    CollectingPin m_pin;
};

} // namespace test_source
