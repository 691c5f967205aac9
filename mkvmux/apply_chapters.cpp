#include "mkvmux/apply_chapters.h"

#include "mkvmux/chapter_files.h"
#include "mkvmux/failure.h"
#include "mkvmux/text.h"

namespace mkvmux {

namespace {

// The first of its titles, and the others behind it.
std::vector<client::Chapter> RecordsOf(const source::Chapter& chapter) {
    client::Chapter record;
    record.level = chapter.level;
    record.start = chapter.start;
    record.end = chapter.end.value_or(MuxChapterTime_None);
    record.uid = chapter.uid;
    record.hidden = chapter.hidden;
    record.disabled = !chapter.enabled;
    std::vector<client::Chapter> records{record};
    for (const source::ChapterTitle& title : chapter.titles) {
        if (&title != &chapter.titles.front()) {
            records.emplace_back().level = MuxLevel_FurtherTitle;
        }
        records.back().title = WideFromUtf8(title.text);
        records.back().language = WideFromUtf8(title.language);
    }
    return records;
}

client::Tag RecordOf(const source::Tag& tag) {
    client::Tag record;
    record.level = tag.level;
    record.targetType = tag.targetType;
    record.target = WideFromUtf8(tag.target);
    record.name = WideFromUtf8(tag.name);
    record.value = WideFromUtf8(tag.value);
    record.language = WideFromUtf8(tag.language);
    return record;
}

bool IsTaken(const source::Chapter& chapter, MuxerSettings& settings) {
    for (const client::Chapter& record : RecordsOf(chapter)) {
        if (!settings.AddChapter(record)) {
            return false;
        }
    }
    return true;
}

// How many of them the muxer does not take.
template <typename List, typename Take>
size_t CountRefused(const List& list, Take take) {
    size_t refused = 0;
    for (const auto& item : list) {
        refused += take(item) ? 0 : 1;
    }
    return refused;
}

} // namespace

void ApplyChapters(const MuxGraph& graph, const Options& options, MuxerSettings& settings, Console& console) {
    const auto take = [&settings](const source::Chapter& chapter) { return IsTaken(chapter, settings); };
    const ChapterOptions& asked = options.chapters;
    if (!asked.chapters.empty()) {
        const auto chapters = ReadChapterFile(asked, console);
        settings.ClearChapters();
        if (const size_t refused = CountRefused(chapters, take); refused > 0) {
            throw Failure(Utf8FromWide(asked.chapters) + ": the muxer refuses " + std::to_string(refused) +
                          " of the chapters: they are too many, or have a language that is none");
        }
    } else if (options.loadConfig.empty() && asked.carryChapters && settings.IsStrict()) {
        if (const size_t refused = CountRefused(graph.Chapters(), take); refused > 0) {
            console.Warn(std::to_string(refused) + " chapters of the inputs cannot be taken over whole");
        }
    }
}

void ApplyGlobalTags(const MuxGraph& graph, const Options& options, MuxerSettings& settings, Console& console) {
    const auto take = [&settings](const source::Tag& tag) { return settings.AddTag(RecordOf(tag)); };
    const ChapterOptions& asked = options.chapters;
    if (!asked.globalTags.empty()) {
        const auto tags = ReadTagFile(asked.globalTags, console);
        settings.ClearTags();
        if (const size_t refused = CountRefused(tags, take); refused > 0) {
            throw Failure(Utf8FromWide(asked.globalTags) + ": the muxer refuses " + std::to_string(refused) +
                          " of the tags: they are too many, or have a language that is none");
        }
    } else if (options.loadConfig.empty() && asked.carryGlobalTags && settings.IsStrict()) {
        if (const size_t refused = CountRefused(graph.Tags(), take); refused > 0) {
            console.Warn(std::to_string(refused) + " tags of the inputs cannot be taken over");
        }
    }
}

} // namespace mkvmux
