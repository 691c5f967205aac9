// CAnnotations: the chapters and tags of a file. Those that are known when it begins stand in front of its clusters;
// what changes until its end is written behind them as a whole, tags together with the statistics, which are known then
// alone. Units: records in 100 ns. Owner: the file being written; the others are not owned. Threads: the writer's.
// Errors: what the output throws, std::bad_alloc; what the system's random numbers throw.
#pragma once

#include <memory>
#include <optional>
#include <utility>

#include <matroska/KaxTags.h>

#include "mkv/chapter_identifiers.h"
#include "mkv/head_element.h"
#include "mkv/user_tags.h"
#include "mkv/writer_input.h"

namespace mkv {

class CAnnotations {
  public:
    CAnnotations(CGatheringIO& io, CFilePatcher& patcher, CSeekHead& seekHead, CIdentifiers& identifiers)
        : m_identifiers(identifiers), m_chaptersPlace(io, patcher, seekHead), m_tagsPlace(io, patcher, seekHead) {}
    CAnnotations(const CAnnotations&) = delete;
    CAnnotations& operator=(const CAnnotations&) = delete;

    // Behind the tracks.
    void write(Annotations annotations, TrackUids uids, bool isWebM);
    // Instead of that: where those begin that the output holds; renders what must be discarded.
    void resume(std::optional<UINT64> chapters, std::optional<UINT64> tags);
    // What the file is to have at its end; without the call it is what it began with.
    void change(Annotations annotations) { m_last = std::move(annotations); }
    // While the file is patched; the statistics may have no children.
    void patch(std::unique_ptr<libmatroska::KaxTags> statistics);
    // When nothing is left to be patched.
    void clearPlaces();

  private:
    [[nodiscard]] std::unique_ptr<libmatroska::KaxTags> makeTags() const;
    void patchChapters();
    void patchTags(std::unique_ptr<libmatroska::KaxTags> statistics);

    CChapterIdentifiers m_identifiers;
    CHeadElement m_chaptersPlace;
    CHeadElement m_tagsPlace;
    Annotations m_first;
    Annotations m_last;
    TrackUids m_uids;
    bool m_isWebM = false;
};

} // namespace mkv
