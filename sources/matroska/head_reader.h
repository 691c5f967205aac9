// HeadReader: reads all of a Matroska file but its clusters: segment information, tracks, attachments,
// chapters, tags of the whole.
//
// Errors: parts that are damaged are left out.
#pragma once

#include <optional>

#include "sources/base/limits.h"
#include "sources/matroska/matroska_file.h"

namespace matroska {

class HeadReader {
  public:
    explicit HeadReader(const source::ByteSource& source) : m_reader(source) {}

    [[nodiscard]] std::optional<MatroskaFile> Read();

  private:
    [[nodiscard]] std::optional<Element> FindSegment() const;
    [[nodiscard]] UINT64 EndOfCluster(const Element& cluster) const;
    void ReadTopLevel(const Element& element);
    void ReadInfo(const Element& info);
    void ReadTracks(const Element& tracks);
    void ReadAttachments(const Element& attachments);
    [[nodiscard]] AttachedFile ReadAttachedFile(const Element& element) const;

    EbmlReader m_reader;
    MatroskaFile m_file;
    UINT64 m_privateRoom = source::kMaxPrivateBytes; // for the codec private data of further tracks
};

} // namespace matroska
