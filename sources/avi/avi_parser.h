// AviParser: walks the RIFF structure of an AVI file once, from front to back.
//
// Units: bytes. Each byte is looked at once. Errors: a chunk that reaches behind its list or the file ends the walk of
// that list.
#pragma once

#include <array>
#include <optional>

#include "sources/avi/avi_file.h"
#include "sources/base/limits.h"

namespace avi {

class AviParser {
  public:
    explicit AviParser(const source::ByteSource& source) : m_source(source) {}

    [[nodiscard]] std::optional<AviFile> Parse();

  private:
    struct Chunk {
        DWORD id = 0;
        UINT64 data = 0; // position of its content
        UINT64 end = 0;  // behind its content, within the list that it lies in
        UINT64 next = 0; // position of the chunk behind it
        bool whole = true;
    };

    [[nodiscard]] std::optional<Chunk> ChunkAt(UINT64 position, UINT64 end) const;
    [[nodiscard]] DWORD DwordAt(UINT64 position) const;

    void WalkSegment(const Chunk& riff);
    void WalkHeaders(const Chunk& list);
    void ReadStream(const Chunk& list);
    void ReadStreamHeader(const Chunk& chunk, AviStream& stream) const;
    void WalkMovie(const Chunk& list, int depth);
    void AddDataChunk(const Chunk& chunk);
    void ReadLegacyIndex(const Chunk& chunk);
    void MarkKeyframes(const std::vector<std::vector<bool>>& flags);
    void ReadStandardIndex(const Chunk& chunk);
    void SetKeyframe(UINT64 dataOffset, bool keyframe);

    const source::ByteSource& m_source;
    AviFile m_file;
    UINT64 m_formatRoom = source::kMaxPrivateBytes; // for the formats of further streams
    size_t m_segmentStart = 0;                      // the first chunk of the current RIFF segment
    bool m_hasLegacyIndex = false;                  // that segment had its index already
};

} // namespace avi
