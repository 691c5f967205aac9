// Feeder: an upstream filter of a schedule: one source, its steps, and what it sent. Every sample tells in its bytes
// whose it is, which one, and how long, so that the file can be read without anybody's word.
//
// Units: times in 100 ns. Owner: the schedule.
// Threads: Play on the feeder's own thread; all else on the application's, while nobody plays.
// Errors: ends the program where the filter answers what it may not.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "fuzz/byte_script.h"
#include "tests/support/fake_upstream_pin.h"

namespace fuzz {

enum class FeederKind { Vfw, ByteStream, Pcm, Aac, Text, Ass, Mp3, Refused };
inline constexpr size_t kFeederKinds = 8;

struct FeederStep {
    enum class Kind { Deliver, DeliverNothing, DeliverFlushed, EndOfStream, Rest };

    Kind kind = Kind::Deliver;
    std::optional<REFERENCE_TIME> start;
    std::optional<REFERENCE_TIME> stop; // only of what has a start
    bool syncPoint = false;
    size_t size = 0;
};

struct SentSample {
    std::uint32_t serial = 0; // over all runs
    FeederStep step;
    bool isTaken = false; // the pin answered S_OK, outside a flush and before the stream's end
};

class Feeder {
  public:
    explicit Feeder(std::uint8_t index) : m_index(index) {}

    // Into that pin, as that kind.
    [[nodiscard]] HRESULT ConnectTo(IPin* pin, FeederKind kind);
    void Disconnect();
    [[nodiscard]] bool IsConnected() const { return m_source != nullptr; }
    [[nodiscard]] IPin* Pin() const { return m_pin.Get(); } // the muxer's; null when not connected
    [[nodiscard]] FeederKind Kind() const { return m_kind; }

    // The next run: reads its steps from the script.
    void Prepare(ByteScript& script, bool endsByItself);
    // Takes the steps one after the other.
    void Play();

    [[nodiscard]] const std::vector<SentSample>& Sent() const { return m_sent; }
    // What ending the stream answered, the first time; none when it was not tried.
    [[nodiscard]] std::optional<HRESULT> EndResult() const { return m_endResult; }
    // Some time was so far away that sums with it stop at the greatest time.
    [[nodiscard]] bool HasExtremeTimes() const { return m_hasExtremeTimes; }

  private:
    [[nodiscard]] FeederStep ReadStep(ByteScript& script);
    void ReadTimes(ByteScript& script, unsigned choice, FeederStep& step);
    void Deliver(const FeederStep& step);
    void DeliverFlushed(const FeederStep& step);
    void End();

    const std::uint8_t m_index;
    FeederKind m_kind = FeederKind::Vfw;
    std::unique_ptr<test_support::FakeUpstreamPin> m_source;
    win::ComPtr<IPin> m_pin;
    win::ComPtr<IMemInputPin> m_input;
    std::vector<FeederStep> m_steps;
    std::vector<SentSample> m_sent; // in this run
    std::uint32_t m_serial = 0;
    REFERENCE_TIME m_time = 0;
    bool m_hasExtremeTimes = false;
    std::optional<HRESULT> m_endResult;
};

// The samples that a block's bytes are made of; ends the program for bytes that no feeder sent so.
struct FoundSample {
    std::uint8_t feeder = 0;
    std::uint32_t serial = 0;
    size_t size = 0;
};
[[nodiscard]] std::vector<FoundSample> SamplesIn(std::span<const BYTE> block);

} // namespace fuzz
