#include "mkv/chapter_identifiers.h"

#include <set>

namespace mkv {

std::vector<records::Chapter> CChapterIdentifiers::complete(const std::vector<records::Chapter>& chapters) {
    std::vector<records::Chapter> completed = chapters;
    std::set<UINT64> taken{0};
    const auto isAsBefore = [&](size_t i) { return i < m_given.size() && chapters[i] == m_given[i]; };
    for (size_t i = 0; i < chapters.size(); ++i) {
        if (isAsBefore(i)) {
            completed[i].uid = m_completed[i].uid;
            taken.insert(completed[i].uid);
        }
    }
    for (size_t i = 0; i < chapters.size(); ++i) {
        while (!isAsBefore(i) && !taken.insert(completed[i].uid).second) {
            completed[i].uid = m_identifiers.next();
        }
    }
    m_given = chapters;
    m_completed = completed;
    return completed;
}

UINT64 CChapterIdentifiers::edition() {
    if (m_edition == 0) {
        m_edition = m_identifiers.next();
    }
    return m_edition;
}

} // namespace mkv
