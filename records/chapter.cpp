#include "records/chapter.h"

#include "records/record_text.h"

namespace records {

namespace {

bool IsTime(INT64 time) {
    return time >= 0 && time <= kMaxRecordTime;
}

bool AreTimes(INT64 start, INT64 end) {
    return IsTime(start) && (end == MuxChapterTime_None || (IsTime(end) && end >= start));
}

} // namespace

Chapter ChapterOf(const MuxChapter& record) {
    Chapter chapter;
    chapter.level = record.level;
    chapter.title = TextOf(record.title);
    chapter.language = TextOf(record.language);
    if (chapter.level != MuxLevel_FurtherTitle) {
        chapter.start = record.start;
        chapter.end = record.end;
        chapter.uid = record.uid;
        chapter.hidden = record.hidden != 0;
        chapter.disabled = record.disabled != 0;
        chapter.isMark = record.start == MuxChapterTime_Now;
    }
    return chapter;
}

void CopyTo(const Chapter& chapter, MuxChapter& record) {
    ReplaceText(record.title, chapter.title);
    ReplaceText(record.language, chapter.language);
    record.level = chapter.level;
    record.start = chapter.start;
    record.end = chapter.end;
    record.uid = chapter.uid;
    record.hidden = chapter.hidden ? 1 : 0;
    record.disabled = chapter.disabled ? 1 : 0;
}

bool IsChapter(const Chapter& chapter) {
    return chapter.level >= MuxLevel_FurtherTitle && chapter.level <= kMaxLevel &&
           AreTimes(chapter.start, chapter.end) && IsText(chapter.title) &&
           IsText(chapter.language, kMaxLanguageLength);
}

bool HasChapterFlags(const MuxChapter& record) {
    return record.level == MuxLevel_FurtherTitle || (record.hidden <= 1 && record.disabled <= 1);
}

} // namespace records
