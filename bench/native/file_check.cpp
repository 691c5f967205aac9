#include "bench/native/file_check.h"

#include <algorithm>
#include <stdexcept>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/matroska_layout.h"

namespace bench {

namespace {

// A file as memory.
class MappedFile {
  public:
    explicit MappedFile(const std::string& path) {
        const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        struct stat info {};
        if (file < 0 || fstat(file, &info) != 0) {
            throw std::runtime_error("cannot read " + path);
        }
        m_size = static_cast<size_t>(info.st_size);
        m_bytes = mmap(nullptr, m_size, PROT_READ, MAP_PRIVATE, file, 0);
        close(file);
        if (m_bytes == MAP_FAILED) {
            throw std::runtime_error("cannot map " + path);
        }
    }
    ~MappedFile() { munmap(m_bytes, m_size); }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    [[nodiscard]] test_support::ByteView Bytes() const { return {static_cast<const BYTE*>(m_bytes), m_size}; }

  private:
    void* m_bytes = nullptr;
    size_t m_size = 0;
};

bool Holds(const test_support::LayoutBlock& block, const LoadPacket& packet) {
    return block.frames.size() == 1 && block.frames.front().size() == packet.size &&
           std::equal(block.frames.front().begin(), block.frames.front().end(), packet.data);
}

} // namespace

void CheckFile(const PacketLoad& load, const std::string& path) {
    const MappedFile file(path);
    const test_support::MatroskaLayout layout = test_support::ReadLayout(file.Bytes());
    std::vector<size_t> next(load.Tracks().size());
    for (const auto& cluster : layout.clusters) {
        for (const auto& block : cluster.blocks) {
            const size_t track = block.track - 1;
            if (track >= next.size() || next[track] >= load.PacketsOf(track).size() ||
                !Holds(block, load.PacketsOf(track)[next[track]])) {
                throw std::runtime_error(path + " has a block that is no packet");
            }
            ++next[track];
        }
    }
    for (size_t track = 0; track < next.size(); ++track) {
        if (next[track] != load.PacketsOf(track).size()) {
            throw std::runtime_error(path + " has not got all packets");
        }
    }
}

} // namespace bench
