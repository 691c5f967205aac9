// CChapterIdentifiers: gives each chapter and the edition its identifier, and the same ones again when the chapters of
// a file are written a second time. Owner: the file being written. Threads: the writer's. Errors: std::bad_alloc; what
// the system's random numbers throw.
#pragma once

#include <vector>

#include "mkv/identifiers.h"
#include "records/chapter.h"

namespace mkv {

class CChapterIdentifiers {
  public:
    explicit CChapterIdentifiers(CIdentifiers& identifiers) : m_identifiers(identifiers) {}
    CChapterIdentifiers(const CChapterIdentifiers&) = delete;
    CChapterIdentifiers& operator=(const CChapterIdentifiers&) = delete;

    // The same chapters, each with one that no other has. What was asked for is given to the first who asks.
    [[nodiscard]] std::vector<records::Chapter> complete(const std::vector<records::Chapter>& chapters);
    [[nodiscard]] UINT64 edition();

  private:
    CIdentifiers& m_identifiers;
    UINT64 m_edition = 0; // 0: not given yet
    std::vector<records::Chapter> m_given;
    std::vector<records::Chapter> m_completed; // one for each of those
};

} // namespace mkv
