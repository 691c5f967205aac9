#include "mkv/annotations.h"

#include <utility>

#include <matroska/KaxChapters.h>

#include "mkv/chapters_element.h"

namespace mkv {

namespace {

// Behind the tags, which are the ones that a reader looks for. Memory may end before the first of them moves, and not
// between them: a child of both would be freed twice.
void MoveChildren(libebml::EbmlMaster& from, libebml::EbmlMaster& to) {
    auto& children = from.GetElementList();
    to.GetElementList().reserve(to.ListSize() + children.size());
    for (libebml::EbmlElement* child : children) {
        to.PushElement(*child);
    }
    children.clear(); // they have a new owner
}

} // namespace

void CAnnotations::write(Annotations annotations, TrackUids uids, bool isWebM) {
    m_first = std::move(annotations);
    m_last = m_first;
    m_uids = std::move(uids);
    m_isWebM = isWebM;
    m_chaptersPlace.write(MakeChapters(m_first.chapters, m_isWebM, m_identifiers));
    auto tags = makeTags();
    m_tagsPlace.write(tags->ListSize() > 0 ? std::move(tags) : nullptr);
}

void CAnnotations::resume(std::optional<UINT64> chapters, std::optional<UINT64> tags) {
    if (chapters) {
        m_chaptersPlace.resumeAt<libmatroska::KaxChapters>(*chapters);
    }
    if (tags) {
        m_tagsPlace.resumeAt<libmatroska::KaxTags>(*tags);
    }
}

std::unique_ptr<libmatroska::KaxTags> CAnnotations::makeTags() const {
    auto tags = std::make_unique<libmatroska::KaxTags>();
    AddUserTags(*tags, m_last.tags, m_uids, m_isWebM);
    return tags;
}

void CAnnotations::patch(std::unique_ptr<libmatroska::KaxTags> statistics) {
    patchChapters();
    patchTags(std::move(statistics));
}

// What was lost in front is written behind.
void CAnnotations::patchChapters() {
    const bool isAsBefore = m_last.chapters == m_first.chapters;
    if (isAsBefore && m_chaptersPlace.isThere()) {
        m_chaptersPlace.keep();
    } else {
        m_chaptersPlace.replaceBy(MakeChapters(m_last.chapters, m_isWebM, m_identifiers));
    }
}

void CAnnotations::patchTags(std::unique_ptr<libmatroska::KaxTags> statistics) {
    if (statistics->ListSize() == 0 && m_last.tags == m_first.tags && m_tagsPlace.isThere()) {
        m_tagsPlace.keep();
        return;
    }
    auto tags = makeTags();
    MoveChildren(*statistics, *tags);
    m_tagsPlace.replaceBy(tags->ListSize() > 0 ? std::move(tags) : nullptr);
}

void CAnnotations::clearPlaces() {
    m_chaptersPlace.clearPlace();
    m_tagsPlace.clearPlace();
}

} // namespace mkv
