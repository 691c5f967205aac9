// StreamSinkPin: the input pin of a file sink over whatever stream a measurement gives it; what it costs the worker is
// not counted.
//
// Owner: the measurement; references are counted, none deletes it. The stream is not owned.
// Threads: connecting is for one thread; the end of the stream from the muxer's worker.
#pragma once

#include "tests/support/fake_sink_pin.h"

namespace bench {

class StreamSinkPin final : public test_support::FakeSinkPin {
  public:
    explicit StreamSinkPin(IStream& stream) : FakeSinkPin(stream) {}

    // std::runtime_error when it does not come.
    void WaitForEndOfStream() const;

    // IPin
    HRESULT STDMETHODCALLTYPE EndOfStream() override;
};

} // namespace bench
