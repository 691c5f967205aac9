// CSeekHead: the list of where the elements of the Segment begin, in the place that is kept for it at the beginning of
// the Segment's content.
// Units: bytes. Owner: the file being written; output and segment are not owned. Threads: the writer's.
// Errors: what the output throws, std::bad_alloc.
#pragma once

#include <ebml/EbmlVoid.h>
#include <matroska/KaxSeekHead.h>
#include <matroska/KaxSegment.h>

#include "mkv/file_patcher.h"
#include "mkv/gathering_io.h"

namespace mkv {

class CSeekHead {
  public:
    CSeekHead(CGatheringIO& io, const libmatroska::KaxSegment& segment) : m_io(io), m_segment(segment) {}
    CSeekHead(const CSeekHead&) = delete;
    CSeekHead& operator=(const CSeekHead&) = delete;

    // The whole element is as long.
    void writePlace(UINT64 bytes);
    // An element that was written, where it lies.
    void list(const libebml::EbmlElement& element) { m_seekHead.IndexThis(element, m_segment); }
    // One that the output holds already: it is rendered once more, since the library learns positions that way alone,
    // and forgotten.
    template <typename Element>
    void listAt(UINT64 position) {
        Element element;
        m_io.moveTo(position);
        static_cast<libebml::EbmlElement&>(element).Render(
            m_io, true, false, true); // without children it is a default, and not rendered else
        m_io.discard();
        list(element);
    }
    // A list that does not fit or was lost leaves the place as it is, and as long.
    void fillPlace(CFilePatcher& patcher);

  private:
    CGatheringIO& m_io;
    const libmatroska::KaxSegment& m_segment;
    libmatroska::KaxSeekHead m_seekHead;
    libebml::EbmlVoid m_place;
};

} // namespace mkv
