#include "bench/stream_sink_pin.h"

#include <stdexcept>

#include "bench/uncounted_section.h"

namespace bench {

HRESULT StreamSinkPin::EndOfStream() {
    const UncountedSection uncounted;
    return FakeSinkPin::EndOfStream();
}

void StreamSinkPin::WaitForEndOfStream() const {
    constexpr std::chrono::hours kFar{1};
    const UncountedSection uncounted;
    if (!FakeSinkPin::WaitForEndOfStream(kFar)) {
        throw std::runtime_error("the end of the stream does not arrive");
    }
}

} // namespace bench
