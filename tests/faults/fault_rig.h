// FaultRig: a muxer filter with video, audio, subtitles and an attachment between fakes, and with title and flags where
// its files are strict, on demand with what strict files tell besides, driven through COM alone, and what it said to
// each call. Nothing that the filter refuses ends the program: a fault may lie behind any call.
//
// Units: bytes. Owner: the test. Threads: one. Errors: as the filter answers; a run that does not end is aborted.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include <qrx_mkvmuxer.h>

#include "mkv/cluster_bytes.h"
#include "tests/support/fake_graph.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/fake_upstream_pin.h"
#include "tests/support/media_types.h"
#include "tests/support/system_code.h"
#include "win/com_ptr.h"
#include "win/wide_string.h"

namespace faults {

using test_support::Bytes;

// The inputs are the file's tracks 1 to 3.
enum Input : size_t { kVideo, kAudio, kSubtitle, kInputs };

// Frames 0 and 1 of all inputs lie in the first cluster, 2 and 3 in the next one, and so on.
inline constexpr size_t kFrames = 8;
inline constexpr size_t kFramesPerCluster = 2;
inline constexpr INT64 kFrameMs = 40;

// Bytes of a frame that is copied into its cluster, and of one that leaves in a write of its own.
inline constexpr size_t kSmall = 300;
inline constexpr size_t kLarge = mkv::CClusterBytes::kMinTakenOverBytes;

// What the filter answered in one run.
struct Outcome {
    HRESULT pause = E_UNEXPECTED;
    HRESULT stop = E_UNEXPECTED;
    // The frames that Receive took, by input.
    std::array<std::vector<size_t>, kInputs> taken;
    // The first answer of Receive or EndOfStream that was not S_OK, by input.
    std::array<HRESULT, kInputs> refusals{};
    // The first parameters of MuxEvent_OutputFailed.
    std::vector<HRESULT> events;
    // So many writes were made before Stop.
    size_t writesBeforeStop = 0;
    Bytes file;
    std::vector<test_support::KeptWrite> writes;

    [[nodiscard]] bool IsTold() const;
};

// What a rig records.
struct Recording {
    size_t videoBytes = kSmall; // of each frame
    MuxProfile profile = MuxProfile_Compatible;
    WideString logDirectory;  // a trace log is written there; empty for none
    bool isAnnotated = false; // with a chapter, a tag and the picture's colours, which strict files alone have

    [[nodiscard]] bool IsStrict() const { return profile == MuxProfile_Strict; }
};

class FaultRig {
  public:
    explicit FaultRig(const Recording& recording);
    // Takes everything apart.
    ~FaultRig();
    FaultRig(const FaultRig&) = delete;
    FaultRig& operator=(const FaultRig&) = delete;

    // Creates, connects and sets parameters, up to the first call that fails.
    HRESULT Build();
    // From Pause to Stop.
    Outcome Run();

    [[nodiscard]] test_support::MemoryStream& Stream() { return m_sink.Stream(); }
    [[nodiscard]] const Recording& What() const { return m_recording; }
    [[nodiscard]] Bytes PayloadOf(Input input, size_t frame) const;

  private:
    HRESULT Create();
    HRESULT Connect();
    HRESULT Configure();
    HRESULT PinAt(ULONG index, IPin** pin);
    HRESULT Deliver(Input input, size_t frame);
    HRESULT End(Input input);
    void Feed(Outcome& outcome);

    test_support::SystemCode m_notTheProduct; // but what ProductCode is said of
    const Recording m_recording;
    const LONG m_objectsBefore;
    test_support::FakeGraph m_graph;
    test_support::FakeSinkPin m_sink;
    std::array<std::unique_ptr<test_support::FakeUpstreamPin>, kInputs> m_sources;
    int m_endsOfStream = 0; // that the sink has heard of in earlier runs
    win::ComPtr<IBaseFilter> m_filter;
};

} // namespace faults
