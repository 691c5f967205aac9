#include "records/part_chapters.h"

#include <algorithm>
#include <limits>

namespace records {

namespace {

constexpr INT64 kNever = std::numeric_limits<INT64>::max();

// Where no end is told: where the next one begins that is no part of it.
std::vector<INT64> EndsOf(const std::vector<Chapter>& chapters) {
    std::vector<INT64> ends(chapters.size(), kNever);
    std::vector<INT64> nextStart; // by level
    for (size_t i = chapters.size(); i-- > 0;) {
        const Chapter& chapter = chapters[i];
        if (chapter.NeedsOneBefore()) {
            continue;
        }
        const auto level = static_cast<size_t>(chapter.level);
        nextStart.resize(level + 1, nextStart.empty() ? kNever : nextStart.back());
        const bool isTold = chapter.end != MuxChapterTime_None;
        ends[i] = isTold ? chapter.end : nextStart[level] < chapter.start ? kNever : nextStart[level];
        nextStart[level] = chapter.start;
    }
    return ends;
}

bool IsIn(const PartTimes& part, INT64 start, INT64 end) {
    const bool isBefore = start < part.start && end <= part.start;
    return !isBefore && (!part.end || start < *part.end);
}

void Move(Chapter& chapter, const PartTimes& part) {
    chapter.start = std::max(chapter.start, part.start) - part.origin;
    if (chapter.end != MuxChapterTime_None) {
        const INT64 end = part.end ? std::min(chapter.end, *part.end) : chapter.end;
        chapter.end = end - part.origin;
    }
}

} // namespace

std::vector<Chapter> ChaptersOfPart(std::vector<Chapter> all, const PartTimes& part) {
    const std::vector<INT64> ends = EndsOf(all);
    std::vector<Chapter> kept;
    kept.reserve(all.size());
    std::optional<INT32> leftOut; // the level of the one that is elsewhere, with all that belongs to it
    for (size_t i = 0; i < all.size(); ++i) {
        Chapter& chapter = all[i];
        const bool belongsToIt = chapter.NeedsOneBefore() || (leftOut && chapter.level > *leftOut);
        if (leftOut && belongsToIt) {
            continue;
        }
        if (chapter.NeedsOneBefore()) {
            kept.push_back(std::move(chapter));
            continue;
        }
        leftOut.reset();
        if (IsIn(part, chapter.start, ends[i])) {
            Move(chapter, part);
            kept.push_back(std::move(chapter));
        } else {
            leftOut = chapter.level;
        }
    }
    return kept;
}

} // namespace records
