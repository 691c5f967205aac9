// What an input costs a reader, counted: the rule of SECURITY.md.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "sources/base/byte_source.h"
#include "sources/base/opened_source.h"
#include "sources/base/packet_reader.h"

namespace test_hostile {

using Bytes = std::vector<BYTE>;

// Zeros wherever nothing was put, as a file with holes. It counts what is read of it.
class CountingSource final : public source::ByteSource {
  public:
    struct Counts {
        UINT64 calls = 0;
        UINT64 bytes = 0;
    };

    CountingSource(Bytes front, UINT64 size, std::shared_ptr<Counts> counts)
        : m_front(std::move(front)), m_size(size), m_counts(std::move(counts)) {}

    [[nodiscard]] UINT64 Size() const override { return m_size; }
    [[nodiscard]] size_t ReadAt(UINT64 offset, std::span<BYTE> buffer) const override;

  private:
    Bytes m_front;
    UINT64 m_size;
    std::shared_ptr<Counts> m_counts;
};

// None when the bytes are refused.
using Open = std::function<std::unique_ptr<source::PacketReader>(std::unique_ptr<source::ByteSource> bytes)>;

struct Cost {
    bool isRefused = false;
    bool isDamaged = false;
    size_t packets = 0;
    UINT64 packetBytes = 0;
    size_t peakBytes = 0; // of the heap
    UINT64 readBytes = 0;
    UINT64 readCalls = 0;
};

// Reads it all; fails the running test when it costs more than the rule allows.
Cost CostOf(const Open& open, const Bytes& bytes);
// A file of that size, of which only the front is not a hole.
Cost CostOfSparse(const Open& open, const Bytes& front, UINT64 size);

[[nodiscard]] std::unique_ptr<source::PacketReader> OpenMatroska(std::unique_ptr<source::ByteSource> bytes);
[[nodiscard]] std::unique_ptr<source::PacketReader> OpenAvi(std::unique_ptr<source::ByteSource> bytes);
[[nodiscard]] std::unique_ptr<source::PacketReader> OpenAvc(std::unique_ptr<source::ByteSource> bytes);
[[nodiscard]] std::unique_ptr<source::PacketReader> OpenHevc(std::unique_ptr<source::ByteSource> bytes);
[[nodiscard]] std::unique_ptr<source::PacketReader> OpenSrt(std::unique_ptr<source::ByteSource> bytes);
[[nodiscard]] std::unique_ptr<source::PacketReader> OpenAss(std::unique_ptr<source::ByteSource> bytes);

} // namespace test_hostile
