#include "records/tag.h"

#include <algorithm>

#include "records/record_text.h"

namespace records {

namespace {

// The element that it goes into holds ASCII alone.
bool IsTarget(const WideString& text) {
    const auto isPrintable = [](WCHAR unit) { return unit >= ' ' && unit <= '~'; };
    return IsText(text, kMaxLanguageLength) && std::all_of(text.begin(), text.end(), isPrintable);
}

} // namespace

Tag TagOf(const MuxTag& record) {
    Tag tag;
    tag.track = record.track;
    tag.level = record.level;
    tag.targetType = record.targetType;
    tag.target = TextOf(record.target);
    tag.name = TextOf(record.name);
    tag.value = TextOf(record.value);
    tag.language = TextOf(record.language);
    return tag;
}

void CopyTo(const Tag& tag, MuxTag& record) {
    ReplaceText(record.target, tag.target);
    ReplaceText(record.name, tag.name);
    ReplaceText(record.value, tag.value);
    ReplaceText(record.language, tag.language);
    record.track = tag.track;
    record.level = tag.level;
    record.targetType = tag.targetType;
}

bool IsTag(const Tag& tag) {
    return tag.track >= MuxTagTrack_All && tag.level >= MuxLevel_Top && tag.level <= kMaxLevel &&
           IsTarget(tag.target) && !tag.name.empty() && IsText(tag.name) && IsText(tag.value) &&
           IsText(tag.language, kMaxLanguageLength);
}

} // namespace records
