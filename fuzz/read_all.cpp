#include "fuzz/read_all.h"

#include <algorithm>
#include <vector>

#include "fuzz/require.h"
#include "sources/base/buffered_source.h"
#include "sources/base/limits.h"

namespace fuzz {

namespace {

class Bytes final : public source::ByteSource {
  public:
    Bytes(const std::uint8_t* data, size_t size) : m_bytes(data, data + size) {}
    [[nodiscard]] UINT64 Size() const override { return m_bytes.size(); }
    [[nodiscard]] size_t ReadAt(UINT64 offset, std::span<BYTE> buffer) const override {
        if (offset >= m_bytes.size()) {
            return 0;
        }
        const size_t count = std::min(buffer.size(), m_bytes.size() - static_cast<size_t>(offset));
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(offset), count, buffer.begin());
        return count;
    }

  private:
    std::vector<BYTE> m_bytes;
};

size_t ReadOnce(source::PacketReader& reader, size_t size) {
    size_t packets = 0;
    UINT64 bytes = 0;
    source::Packet packet;
    while (reader.Next(packet)) {
        ++packets;
        bytes += packet.data.size();
        Require(packet.stream < reader.Streams().size());
        Require(packet.data.size() <= source::kMaxPacketBytes);
        Require(packet.start >= 0 && packet.start <= source::kMaxTime);
        Require(!packet.hasStop || (packet.stop >= packet.start && packet.stop <= source::kMaxTime));
        Require(bytes <= 64 * source::kMiB + 100 * UINT64{size});
    }
    return packets;
}

} // namespace

std::unique_ptr<source::ByteSource> SourceOf(const std::uint8_t* data, size_t size) {
    return std::make_unique<source::BufferedSource>(std::make_unique<Bytes>(data, size));
}

void ReadAll(source::PacketReader* reader, size_t size) {
    if (reader == nullptr) {
        return;
    }
    const size_t first = ReadOnce(*reader, size);
    const HRESULT damage = reader->Damage();
    reader->Rewind();
    Require(ReadOnce(*reader, size) == first && reader->Damage() == damage);
}

} // namespace fuzz
