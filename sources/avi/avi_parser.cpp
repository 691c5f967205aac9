#include "sources/avi/avi_parser.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace avi {

namespace {

constexpr DWORD Id(const char (&text)[5]) {
    return static_cast<DWORD>(static_cast<BYTE>(text[0])) | static_cast<DWORD>(static_cast<BYTE>(text[1])) << 8 |
           static_cast<DWORD>(static_cast<BYTE>(text[2])) << 16 | static_cast<DWORD>(static_cast<BYTE>(text[3])) << 24;
}

constexpr UINT64 kChunkHeaderBytes = 8;
constexpr UINT64 kListTypeBytes = 4;
// Writers that count the outer head as a part of its content claim this much too much, and a pad byte.
constexpr UINT64 kMiscountedBytes = kChunkHeaderBytes + 1;
constexpr size_t kMaxStreams = 100; // two decimal digits name a stream
// A day of pictures and sound, twice over; more is a file made to exhaust the memory.
constexpr size_t kMaxChunks = size_t{8} * 1024 * 1024;
constexpr UINT64 kMaxFormatBytes = UINT64{1024} * 1024;
constexpr int kMaxListDepth = 2;

// Offsets in the stream header 'strh'.
constexpr UINT64 kStreamHeaderBytes = 48;
constexpr UINT64 kScaleOffset = 20;
constexpr UINT64 kRateOffset = 24;
constexpr UINT64 kStartOffset = 28;
constexpr UINT64 kSampleSizeOffset = 44;

// 'idx1': an identifier, flags, offset and size for each chunk.
constexpr UINT64 kLegacyEntryBytes = 16;
constexpr DWORD kLegacyKeyframe = 0x10;

// 'ix##': a head, then offset and size for each chunk.
constexpr UINT64 kStandardHeadBytes = 24;
constexpr UINT64 kStandardCountOffset = 4;
constexpr UINT64 kStandardBaseOffset = 12;
constexpr UINT64 kStandardEntryBytes = 8;
constexpr DWORD kStandardNoKeyframe = 0x80000000;

DWORD Little(const BYTE* bytes) {
    return static_cast<DWORD>(bytes[0]) | static_cast<DWORD>(bytes[1]) << 8 | static_cast<DWORD>(bytes[2]) << 16 |
           static_cast<DWORD>(bytes[3]) << 24;
}

// The stream whose data the chunk holds, which the identifier's first two characters name: "01wb". A change of the
// palette ("01pc") is no picture and takes no time.
std::optional<WORD> StreamOf(DWORD id) {
    if (id >> 16 == Id("00pc") >> 16) {
        return {};
    }
    const int tens = static_cast<int>(id & 0xff) - '0';
    const int ones = static_cast<int>(id >> 8 & 0xff) - '0';
    if (tens < 0 || tens > 9 || ones < 0 || ones > 9) {
        return {};
    }
    return static_cast<WORD>(10 * tens + ones);
}

bool IsStandardIndex(DWORD id) {
    return (id & 0xffff) == (Id("ix00") & 0xffff);
}

// A stream that begins a day after the others is a damaged header.
DWORD SaneStart(const AviStream& stream, DWORD start) {
    constexpr UINT64 kMaxStartSeconds = UINT64{24} * 60 * 60;
    return UINT64{start} * stream.scale <= kMaxStartSeconds * stream.rate ? start : 0;
}

} // namespace

std::optional<AviFile> AviParser::Parse() {
    UINT64 position = 0;
    while (const auto riff = ChunkAt(position, m_source.Size())) {
        const DWORD type = DwordAt(riff->data);
        if (riff->id != Id("RIFF") || (type != Id("AVI ") && type != Id("AVIX"))) {
            break;
        }
        WalkSegment(*riff);
        m_file.isCutOff = m_file.isCutOff || riff->next > m_source.Size() + kMiscountedBytes;
        position = riff->next;
    }
    if (m_file.streams.empty()) {
        return {};
    }
    return std::move(m_file);
}

std::optional<AviParser::Chunk> AviParser::ChunkAt(UINT64 position, UINT64 end) const {
    std::array<BYTE, kChunkHeaderBytes> head{};
    if (position > end || end - position < head.size() || m_source.ReadAt(position, head) != head.size()) {
        return {};
    }
    Chunk chunk;
    chunk.id = Little(head.data());
    const UINT64 size = Little(head.data() + 4);
    chunk.data = position + head.size();
    // Lists of a recording that was cut off have the size 0 still: they reach as far as there is something.
    const bool unfinished = size == 0 && (chunk.id == Id("RIFF") || chunk.id == Id("LIST"));
    chunk.end = unfinished ? end : std::min(chunk.data + size, end);
    chunk.next = unfinished ? end : chunk.data + size + (size & 1);
    chunk.whole = unfinished || chunk.data + size <= end;
    return chunk;
}

// 0 behind the end of the file.
DWORD AviParser::DwordAt(UINT64 position) const {
    std::array<BYTE, sizeof(DWORD)> bytes{};
    return m_source.ReadAt(position, bytes) == bytes.size() ? Little(bytes.data()) : 0;
}

void AviParser::WalkSegment(const Chunk& riff) {
    m_segmentStart = m_file.chunks.size();
    m_hasLegacyIndex = false;
    UINT64 position = riff.data + kListTypeBytes;
    while (const auto chunk = ChunkAt(position, riff.end)) {
        if (chunk->id == Id("LIST")) {
            const DWORD type = DwordAt(chunk->data);
            if (type == Id("hdrl")) {
                WalkHeaders(*chunk);
            } else if (type == Id("movi")) {
                WalkMovie(*chunk, 0);
            }
        } else if (chunk->id == Id("idx1")) {
            ReadLegacyIndex(*chunk);
        }
        position = chunk->next;
    }
}

void AviParser::WalkHeaders(const Chunk& list) {
    UINT64 position = list.data + kListTypeBytes;
    while (const auto chunk = ChunkAt(position, list.end)) {
        if (chunk->id == Id("LIST") && DwordAt(chunk->data) == Id("strl") && m_file.streams.size() < kMaxStreams) {
            ReadStream(*chunk);
        }
        position = chunk->next;
    }
}

void AviParser::ReadStream(const Chunk& list) {
    AviStream stream;
    UINT64 position = list.data + kListTypeBytes;
    while (const auto chunk = ChunkAt(position, list.end)) {
        if (chunk->id == Id("strh")) {
            ReadStreamHeader(*chunk, stream);
        } else if (chunk->id == Id("strf") && chunk->end - chunk->data <= std::min(kMaxFormatBytes, m_formatRoom)) {
            stream.format.resize(static_cast<size_t>(chunk->end - chunk->data));
            stream.format.resize(m_source.ReadAt(chunk->data, stream.format));
        }
        position = chunk->next;
    }
    m_formatRoom -= stream.format.size();
    m_file.streams.push_back(std::move(stream));
}

void AviParser::ReadStreamHeader(const Chunk& chunk, AviStream& stream) const {
    if (chunk.end - chunk.data < kStreamHeaderBytes) {
        return;
    }
    stream.type = DwordAt(chunk.data);
    stream.scale = DwordAt(chunk.data + kScaleOffset);
    stream.rate = DwordAt(chunk.data + kRateOffset);
    stream.start = SaneStart(stream, DwordAt(chunk.data + kStartOffset));
    stream.sampleSize = DwordAt(chunk.data + kSampleSizeOffset);
}

void AviParser::WalkMovie(const Chunk& list, int depth) {
    UINT64 position = list.data + kListTypeBytes;
    while (const auto chunk = ChunkAt(position, list.end)) {
        if (chunk->id == Id("LIST")) {
            if (depth < kMaxListDepth) {
                WalkMovie(*chunk, depth + 1); // 'rec ', chunks that are read together
            }
        } else if (IsStandardIndex(chunk->id)) {
            ReadStandardIndex(*chunk);
        } else {
            AddDataChunk(*chunk);
        }
        position = chunk->next;
    }
}

void AviParser::AddDataChunk(const Chunk& chunk) {
    const std::optional<WORD> stream = StreamOf(chunk.id);
    if (!stream || *stream >= m_file.streams.size()) {
        return;
    }
    if (m_file.chunks.size() >= kMaxChunks) {
        m_file.lacksChunks = true;
        return;
    }
    if (!chunk.whole) {
        m_file.isCutOff = true;
        return;
    }
    const DWORD size = static_cast<DWORD>(chunk.end - chunk.data);
    AviStream& owner = m_file.streams[*stream];
    owner.largestChunk = std::max(owner.largestChunk, size);
    m_file.chunks.push_back({chunk.data, size, *stream, true});
}

// Its offsets count from here or from there; the order of its entries is that of the chunks. A segment has one: what
// follows is not looked at, or many of them would cost the number of chunks each.
void AviParser::ReadLegacyIndex(const Chunk& chunk) {
    if (std::exchange(m_hasLegacyIndex, true)) {
        return;
    }
    std::vector<std::vector<bool>> flags(m_file.streams.size());
    for (UINT64 entry = chunk.data; entry + kLegacyEntryBytes <= chunk.end; entry += kLegacyEntryBytes) {
        const std::optional<WORD> stream = StreamOf(DwordAt(entry));
        if (stream && *stream < flags.size() && flags[*stream].size() < m_file.chunks.size()) {
            flags[*stream].push_back((DwordAt(entry + 4) & kLegacyKeyframe) != 0);
        }
    }
    MarkKeyframes(flags);
}

void AviParser::MarkKeyframes(const std::vector<std::vector<bool>>& flags) {
    std::vector<size_t> next(flags.size());
    for (size_t at = m_segmentStart; at < m_file.chunks.size(); ++at) {
        AviChunk& chunk = m_file.chunks[at];
        const std::vector<bool>& ofStream = flags[chunk.stream];
        if (size_t& entry = next[chunk.stream]; entry < ofStream.size()) {
            chunk.keyframe = ofStream[entry++];
        }
    }
}

void AviParser::ReadStandardIndex(const Chunk& chunk) {
    if (chunk.end - chunk.data < kStandardHeadBytes) {
        return;
    }
    const UINT64 base = DwordAt(chunk.data + kStandardBaseOffset) |
                        static_cast<UINT64>(DwordAt(chunk.data + kStandardBaseOffset + 4)) << 32;
    const UINT64 room = (chunk.end - chunk.data - kStandardHeadBytes) / kStandardEntryBytes;
    const UINT64 count = std::min<UINT64>(DwordAt(chunk.data + kStandardCountOffset), room);
    for (UINT64 i = 0; i < count; ++i) {
        const UINT64 entry = chunk.data + kStandardHeadBytes + i * kStandardEntryBytes;
        SetKeyframe(base + DwordAt(entry), (DwordAt(entry + 4) & kStandardNoKeyframe) == 0);
    }
}

void AviParser::SetKeyframe(UINT64 dataOffset, bool keyframe) {
    const auto at = std::lower_bound(m_file.chunks.begin(), m_file.chunks.end(), dataOffset,
                                     [](const AviChunk& chunk, UINT64 offset) { return chunk.offset < offset; });
    if (at != m_file.chunks.end() && at->offset == dataOffset) {
        at->keyframe = keyframe;
    }
}

std::optional<AviFile> ReadAviFile(const source::ByteSource& source) {
    return AviParser(source).Parse();
}

} // namespace avi
