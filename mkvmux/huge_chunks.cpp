#include "mkvmux/huge_chunks.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <span>

#include "sources/base/file_source.h"
#include "sources/base/limits.h"

namespace mkvmux {

namespace {

constexpr size_t kChunkHeadBytes = 8; // identifier and size
constexpr size_t kListHeadBytes = 12; // and the list's type
// As many as our own reader takes. A file of more is taken for huge: nobody knows what the splitter finds behind them.
constexpr int kMaxChunks = 8 << 20;

struct ChunkHead {
    std::array<BYTE, kListHeadBytes> bytes;

    [[nodiscard]] bool Is(size_t offset, const char* text) const {
        return std::equal(text, text + sizeof(DWORD), bytes.begin() + static_cast<std::ptrdiff_t>(offset),
                          [](char a, BYTE b) { return static_cast<BYTE>(a) == b; });
    }
    [[nodiscard]] UINT64 Size() const {
        return bytes[4] | UINT64{bytes[5]} << 8U | UINT64{bytes[6]} << 16U | UINT64{bytes[7]} << 24U;
    }
    // Of a stream: "00dc", "01wb".
    [[nodiscard]] bool IsMedia() const { return std::isdigit(bytes[0]) != 0 && std::isdigit(bytes[1]) != 0; }
    [[nodiscard]] bool IsList() const { return Is(0, "LIST"); }
    [[nodiscard]] bool IsMovie() const { return IsList() && Is(kChunkHeadBytes, "movi"); }
    // Whose contents are media by all that is known of the format.
    [[nodiscard]] bool HoldsMedia() const {
        return Is(0, "RIFF") || IsMovie() || (IsList() && Is(kChunkHeadBytes, "rec "));
    }
};

// Reads forwards; heads that lie near each other cost one read.
class HeadReader {
  public:
    explicit HeadReader(const source::ByteSource& bytes) : m_bytes(bytes) {}

    // False behind the last chunk.
    [[nodiscard]] bool Read(UINT64 position, ChunkHead& head) {
        if (position < m_start || position + kListHeadBytes > m_start + m_held) {
            m_start = position;
            m_held = position < m_bytes.Size() ? m_bytes.ReadAt(position, m_window) : 0;
        }
        const size_t offset = static_cast<size_t>(position - m_start);
        const size_t count = std::min(m_held - offset, kListHeadBytes);
        head = {};
        std::copy_n(m_window.begin() + static_cast<std::ptrdiff_t>(offset), count, head.bytes.begin());
        return count >= kChunkHeadBytes;
    }

  private:
    const source::ByteSource& m_bytes;
    std::array<BYTE, 4096> m_window{};
    UINT64 m_start = 0;
    size_t m_held = 0;
};

enum class Found { Nothing, UnknownList, HugeChunk };

// Chunk by chunk; what a list holds is walked as if it stood beside the list, whatever size the list says it has.
Found Walk(const source::ByteSource& bytes, bool opensUnknownLists) {
    HeadReader reader(bytes);
    ChunkHead head;
    UINT64 position = 0;
    bool isInMovie = false;
    bool sawUnknownList = false;
    for (int chunk = 0; reader.Read(position, head); ++chunk) {
        if (chunk == kMaxChunks || (head.IsMedia() && head.Size() > source::kMaxPacketBytes)) {
            return Found::HugeChunk;
        }
        isInMovie = isInMovie || head.IsMovie();
        const bool isUnknown = isInMovie && head.IsList() && !head.HoldsMedia();
        sawUnknownList = sawUnknownList || isUnknown;
        const bool opens = head.HoldsMedia() || (isUnknown && opensUnknownLists);
        position += opens ? kListHeadBytes : kChunkHeadBytes + head.Size() + head.Size() % 2;
    }
    return sawUnknownList ? Found::UnknownList : Found::Nothing;
}

bool IsAvi(const source::ByteSource& bytes) {
    ChunkHead head;
    return HeadReader(bytes).Read(0, head) && head.Is(0, "RIFF") && head.Is(kChunkHeadBytes, "AVI ");
}

} // namespace

// A list of another kind may hold media or anything else: both ways are gone.
bool HasHugeChunk(const source::ByteSource& bytes) {
    if (!IsAvi(bytes)) {
        return false;
    }
    Found found = Walk(bytes, false);
    if (found == Found::UnknownList) {
        found = Walk(bytes, true);
    }
    return found == Found::HugeChunk;
}

bool HasHugeChunk(const std::wstring& path) {
    source::FileSource file;
    return SUCCEEDED(file.Open(path)) && HasHugeChunk(file);
}

} // namespace mkvmux
