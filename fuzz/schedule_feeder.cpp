#include "fuzz/schedule_feeder.h"

#include <limits>
#include <thread>

#include "fuzz/require.h"
#include "tests/support/media_types.h"

namespace fuzz {

using namespace test_support;

namespace {

constexpr size_t kMaxSteps = 24;
constexpr REFERENCE_TIME kMs = 10000;
constexpr BYTE kMark = 0xfe;
constexpr std::uint32_t kDigit = 0x7f; // every byte behind the first four is above it: no start code lies there
constexpr size_t kStartBytes = 4;      // a start code, a length, or four marks
constexpr size_t kHeadBytes = kStartBytes + 1 + 3 + 3;
constexpr size_t kSmallBytes = 300;

BYTE Digit(std::uint64_t value) {
    return static_cast<BYTE>((value & kDigit) | 0x80);
}

std::uint32_t NumberAt(std::span<const BYTE> digits) {
    return (digits[0] & kDigit) << 14 | (digits[1] & kDigit) << 7 | (digits[2] & kDigit);
}

// None or at least a head.
std::vector<BYTE> BytesOf(std::uint8_t feeder, std::uint32_t serial, size_t size, bool hasStartCode) {
    std::vector<BYTE> bytes;
    if (size == 0) {
        return bytes;
    }
    bytes.reserve(size);
    bytes.assign(kStartBytes, hasStartCode ? BYTE{0} : kMark);
    bytes[kStartBytes - 1] = hasStartCode ? 1 : kMark;
    for (const std::uint64_t value :
         {std::uint64_t{feeder}, std::uint64_t{serial} >> 14, std::uint64_t{serial} >> 7, std::uint64_t{serial},
          std::uint64_t{size} >> 14, std::uint64_t{size} >> 7, std::uint64_t{size}}) {
        bytes.push_back(Digit(value));
    }
    while (bytes.size() < size) {
        bytes.push_back(Digit(serial + bytes.size()));
    }
    return bytes;
}

MediaTypeValue TypeOf(FeederKind kind) {
    static const Bytes kSets = {0, 0, 0, 1, 0x67, 0x64, 0, 0x0b, 0xac, 0xd9, 0, 0, 0, 1, 0x68, 0xeb};
    switch (kind) {
    case FeederKind::Vfw:
        return VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd'));
    case FeederKind::ByteStream:
        return Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, kSets);
    case FeederKind::Pcm:
        return WaveType(mediasubtype::kPcm);
    case FeederKind::Aac:
        return WaveType(mediasubtype::kRawAac, {}, {0x11, 0x90});
    case FeederKind::Text:
        return TextType();
    case FeederKind::Ass:
        return SubtitleType(mediasubtype::kAss, {'h'});
    case FeederKind::Mp3:
        return WaveType(mediasubtype::kMp3);
    case FeederKind::Refused: // an input takes it for its subtype; streaming does not start with it
        break;
    }
    return {MEDIATYPE_Video, mediasubtype::kAvc1, FORMAT_None};
}

size_t SizeOf(unsigned choice, size_t byte) {
    constexpr size_t kFactors[] = {1, 16, 300}; // the last ones are taken over instead of copied
    return choice == 3 ? (byte < 64 ? 0 : kHeadBytes + byte) : kHeadBytes + byte * kFactors[choice];
}

} // namespace

HRESULT Feeder::ConnectTo(IPin* pin, FeederKind kind) {
    Require(!IsConnected());
    auto source = std::make_unique<FakeUpstreamPin>(TypeOf(kind));
    const HRESULT hr = source->ConnectTo(pin);
    if (SUCCEEDED(hr)) {
        m_kind = kind;
        m_pin = pin;
        m_input = source->Input();
        m_source = std::move(source);
    }
    return hr;
}

void Feeder::Disconnect() {
    if (IsConnected()) {
        m_source->Unplug();
        m_source.reset();
        m_pin.Reset();
        m_input.Reset();
    }
}

// ---- The script --------------------------------------------------------------------------------------------------

void Feeder::Prepare(ByteScript& script, bool endsByItself) {
    m_steps.clear();
    m_sent.clear();
    m_endResult.reset();
    m_time = 0;
    m_hasExtremeTimes = false;
    for (size_t count = script.Below(kMaxSteps); count > 0; --count) {
        m_steps.push_back(ReadStep(script));
    }
    if (endsByItself) {
        m_steps.push_back({FeederStep::Kind::EndOfStream, {}, {}, false, 0});
    }
}

FeederStep Feeder::ReadStep(ByteScript& script) {
    FeederStep step;
    const std::uint8_t kind = script.Byte();
    const std::uint8_t choices = script.Byte();
    step.kind = kind < 244   ? FeederStep::Kind::Deliver
                : kind < 247 ? FeederStep::Kind::DeliverNothing
                : kind < 250 ? FeederStep::Kind::DeliverFlushed
                : kind < 251 ? FeederStep::Kind::EndOfStream
                             : FeederStep::Kind::Rest;
    step.syncPoint = (choices & 1) != 0;
    step.size = SizeOf(choices >> 1 & 3, script.Byte());
    ReadTimes(script, choices >> 3, step);
    return step;
}

void Feeder::ReadTimes(ByteScript& script, unsigned choice, FeederStep& step) {
    constexpr REFERENCE_TIME kFar = REFERENCE_TIME{1} << 54;
    const REFERENCE_TIME by = script.Byte();
    const REFERENCE_TIME length = script.Byte();
    switch (choice & 7) {
    default:
        m_time += by * kMs;
        break;
    case 4:
        m_time -= by * 100 * kMs;
        break;
    case 5:
        m_time += by * 1000 * kMs + by; // beyond a cluster
        break;
    case 6:
        m_time += by * (kFar >> 8);
        break;
    case 7:
        m_time += by;
        break;
    }
    if (m_time > kFar || m_time < -kFar) {
        m_time = 0;
    }
    if ((choice >> 3 & 3) == 3) {
        return; // untimed
    }
    step.start = m_time;
    if ((choice & 7) == 6 && by > 250) {
        step.start =
            by % 2 == 0 ? std::numeric_limits<REFERENCE_TIME>::max() : std::numeric_limits<REFERENCE_TIME>::min();
        m_hasExtremeTimes = true;
    }
    if ((choice >> 3 & 3) != 2 && !m_hasExtremeTimes) {
        step.stop = *step.start + (length - 16) * kMs; // some before the start
    }
}

// ---- The run -----------------------------------------------------------------------------------------------------

void Feeder::Play() {
    if (!IsConnected()) {
        return;
    }
    for (const FeederStep& step : m_steps) {
        switch (step.kind) {
        case FeederStep::Kind::Deliver:
        case FeederStep::Kind::DeliverNothing:
            Deliver(step);
            break;
        case FeederStep::Kind::DeliverFlushed:
            DeliverFlushed(step);
            break;
        case FeederStep::Kind::EndOfStream:
            End();
            break;
        case FeederStep::Kind::Rest:
            std::this_thread::yield();
            break;
        }
    }
}

void Feeder::Deliver(const FeederStep& step) {
    SentSample sent{++m_serial, step, false};
    // Behind the stream's end nothing is taken any more, so that there must be no more than there is room for.
    const bool hasEnded = m_endResult == S_OK;
    sent.step.size = hasEnded ? std::min(step.size, kSmallBytes) : step.size;
    FakeMediaSample sample(BytesOf(m_index, sent.serial, sent.step.size, m_kind == FeederKind::ByteStream));
    sample.WithSyncPoint(step.syncPoint);
    if (step.kind == FeederStep::Kind::DeliverNothing) {
        sent.serial % 2 == 0 ? sample.WithClaimedLength(-1) : sample.WithPointerFailure(E_FAIL);
        sent.step.size = 0;
    }
    if (step.start && step.stop) {
        sample.WithTimes(*step.start, *step.stop);
    } else if (step.start) {
        sample.WithStartOnly(*step.start);
    }
    sent.isTaken = m_input->Receive(&sample) == S_OK && !hasEnded;
    m_sent.push_back(sent);
}

// What comes in while a flush lasts is dropped without a word.
void Feeder::DeliverFlushed(const FeederStep& step) {
    Require(SUCCEEDED(m_pin->BeginFlush()));
    FeederStep delivered = step;
    delivered.kind = FeederStep::Kind::Deliver;
    Deliver(delivered);
    m_sent.back().isTaken = false;
    Require(SUCCEEDED(m_pin->EndFlush()));
}

void Feeder::End() {
    const HRESULT hr = m_pin->EndOfStream();
    if (m_endResult != S_OK) {
        m_endResult = hr;
    }
}

// ---- What a block holds ------------------------------------------------------------------------------------------

std::vector<FoundSample> SamplesIn(std::span<const BYTE> block) {
    std::vector<FoundSample> samples;
    while (!block.empty()) {
        Require(block.size() >= kHeadBytes);
        const auto digits = block.subspan(kStartBytes);
        FoundSample found{static_cast<std::uint8_t>(digits[0] & kDigit), NumberAt(digits.subspan(1)),
                          NumberAt(digits.subspan(4))};
        Require(found.size >= kHeadBytes && found.size <= block.size());
        const std::vector<BYTE> sent = BytesOf(found.feeder, found.serial, found.size, false);
        Require(std::equal(sent.begin() + kStartBytes, sent.end(), digits.begin()));
        const std::uint32_t start = static_cast<std::uint32_t>(block[0]) << 24 |
                                    static_cast<std::uint32_t>(block[1]) << 16 |
                                    static_cast<std::uint32_t>(block[2]) << 8 | block[3];
        Require(start == 0xfefefefe || start == found.size - kStartBytes); // a length where the start code stood
        samples.push_back(found);
        block = block.subspan(found.size);
    }
    return samples;
}

} // namespace fuzz
