#include "tests/sources/hostile_inputs/input_cost.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "sources/annexb/annexb_reader.h"
#include "sources/avi/avi_reader.h"
#include "sources/base/buffered_source.h"
#include "sources/matroska/matroska_reader.h"
#include "sources/text/ass_parser.h"
#include "sources/text/srt_parser.h"
#include "sources/text/subtitle_reader.h"
#include "sources/text/text_source.h"
#include "tests/sources/base/allocation_meter.h"

namespace test_hostile {

namespace {

// The rule.
constexpr size_t kMemoryAboveTheInput = 256 * source::kMiB;
constexpr UINT64 kReadingTheInput = 100; // times
constexpr UINT64 kPacketsAboveTheInput = 64 * source::kMiB;
constexpr UINT64 kSmallest = 64 * 1024; // a window of the buffer is read of every input

std::unique_ptr<source::ByteSource> Buffered(std::unique_ptr<source::ByteSource> bytes) {
    return std::make_unique<source::BufferedSource>(std::move(bytes));
}

template <annexb::PictureIndex (*Index)(const source::ByteSource&)>
std::unique_ptr<source::PacketReader> OpenByteStream(std::unique_ptr<source::ByteSource> bytes, annexb::Codec codec) {
    bytes = Buffered(std::move(bytes));
    annexb::PictureIndex index = Index(*bytes);
    return index.pictures.empty()
               ? nullptr
               : std::make_unique<annexb::AnnexBReader>(std::move(bytes), std::move(index), codec, annexb::FrameRate());
}

void Measure(source::PacketReader& reader, Cost& cost) {
    source::Packet packet;
    while (reader.Next(packet)) {
        ++cost.packets;
        cost.packetBytes += packet.data.size();
    }
    cost.isDamaged = FAILED(reader.Damage());
}

} // namespace

size_t CountingSource::ReadAt(UINT64 offset, std::span<BYTE> buffer) const {
    const size_t count = static_cast<size_t>(std::min<UINT64>(buffer.size(), offset < m_size ? m_size - offset : 0));
    ++m_counts->calls;
    m_counts->bytes += count;
    std::fill_n(buffer.begin(), count, BYTE{0});
    if (offset < m_front.size()) {
        const size_t held = std::min(count, m_front.size() - static_cast<size_t>(offset));
        std::copy_n(m_front.begin() + static_cast<std::ptrdiff_t>(offset), held, buffer.begin());
    }
    return count;
}

Cost CostOf(const Open& open, const Bytes& bytes) {
    return CostOfSparse(open, bytes, bytes.size());
}

Cost CostOfSparse(const Open& open, const Bytes& front, UINT64 size) {
    auto counts = std::make_shared<CountingSource::Counts>();
    auto bytes = std::make_unique<CountingSource>(front, size, counts);
    Cost cost;
    const test_source::AllocationMeter meter;
    if (const auto reader = open(std::move(bytes))) {
        Measure(*reader, cost);
    } else {
        cost.isRefused = true;
    }
    cost.peakBytes = meter.PeakBytes();
    cost.readBytes = counts->bytes;
    cost.readCalls = counts->calls;
    EXPECT_LE(cost.peakBytes, front.size() + kMemoryAboveTheInput);
    EXPECT_LE(cost.readBytes, kReadingTheInput * std::max<UINT64>(front.size(), kSmallest));
    EXPECT_LE(cost.packetBytes, kPacketsAboveTheInput + kReadingTheInput * front.size());
    return cost;
}

std::unique_ptr<source::PacketReader> OpenMatroska(std::unique_ptr<source::ByteSource> bytes) {
    bytes = Buffered(std::move(bytes));
    auto file = matroska::ReadMatroskaFile(*bytes);
    return file ? std::make_unique<matroska::MatroskaReader>(std::move(bytes), std::move(*file)) : nullptr;
}

std::unique_ptr<source::PacketReader> OpenAvi(std::unique_ptr<source::ByteSource> bytes) {
    bytes = Buffered(std::move(bytes));
    auto file = avi::ReadAviFile(*bytes);
    return file ? std::make_unique<avi::AviReader>(std::move(bytes), std::move(*file)) : nullptr;
}

std::unique_ptr<source::PacketReader> OpenAvc(std::unique_ptr<source::ByteSource> bytes) {
    return OpenByteStream<annexb::IndexAvc>(std::move(bytes), annexb::Codec::Avc);
}

std::unique_ptr<source::PacketReader> OpenHevc(std::unique_ptr<source::ByteSource> bytes) {
    return OpenByteStream<annexb::IndexHevc>(std::move(bytes), annexb::Codec::Hevc);
}

std::unique_ptr<source::PacketReader> OpenSrt(std::unique_ptr<source::ByteSource> bytes) {
    return subtitles::MakeReader(*bytes, subtitles::ParseSrt);
}

std::unique_ptr<source::PacketReader> OpenAss(std::unique_ptr<source::ByteSource> bytes) {
    return subtitles::MakeReader(*bytes, subtitles::ParseAss);
}

} // namespace test_hostile
