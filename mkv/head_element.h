// CHeadElement: an element in front of the clusters, so that a recording that is cut off has it, which may be written
// anew behind them when more is known. Then its place becomes a Void, and the seek head lists the new one.
// Units: bytes. Owner: the file being written; the others are not owned. Threads: the writer's.
// Errors: what the output throws, std::bad_alloc.
#pragma once

#include <memory>
#include <utility>

#include <ebml/EbmlMaster.h>

#include "mkv/file_patcher.h"
#include "mkv/gathering_io.h"
#include "mkv/seek_head.h"

namespace mkv {

class CHeadElement {
  public:
    CHeadElement(CGatheringIO& io, CFilePatcher& patcher, CSeekHead& seekHead)
        : m_io(io), m_patcher(patcher), m_seekHead(seekHead) {}
    CHeadElement(const CHeadElement&) = delete;
    CHeadElement& operator=(const CHeadElement&) = delete;

    // While the head is written; nothing is written of none. One that a failed write lost is not there.
    void write(std::unique_ptr<libebml::EbmlMaster> element);
    // Instead of that: the output holds it there. It is rendered once more, since the library learns positions that way
    // alone, and forgotten.
    template <typename Element>
    void resumeAt(UINT64 position) {
        auto element = std::make_unique<Element>();
        m_io.moveTo(position);
        element->Render(m_io, true, false, true); // without children it is a default, and not rendered else
        m_io.discard();
        m_element = std::move(element);
    }
    [[nodiscard]] bool isThere() const { return m_element != nullptr; }

    // One of these, while the file is patched. What does not arrive leaves the one that is there.
    void keep();
    void replaceBy(std::unique_ptr<libebml::EbmlMaster> element);
    // When the file is finished: until then a repair finds what stands in front, and cuts off what comes behind.
    void clearPlace();

  private:
    CGatheringIO& m_io;
    CFilePatcher& m_patcher;
    CSeekHead& m_seekHead;
    std::unique_ptr<libebml::EbmlMaster> m_element;
    bool m_isReplaced = false;
};

} // namespace mkv
