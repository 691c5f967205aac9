// Chapter and tag files: the same bytes as lines and as both kinds of XML. What is read keeps to the lists' bounds, and
// levels never jump by more than one.
#include <string>

#include "fuzz/require.h"
#include "sources/chapters/chapter_xml.h"
#include "sources/chapters/simple_chapters.h"
#include "sources/chapters/tag_xml.h"
#include "sources/chapters/text_error.h"

namespace {

template <typename List>
void RequireTree(const List& list) {
    INT32 before = -1;
    for (const auto& item : list) {
        fuzz::Require(item.level >= 0 && item.level <= source::kMaxDepth && item.level <= before + 1);
        before = item.level;
    }
}

void RequireChapters(const std::vector<source::Chapter>& chapters) {
    fuzz::Require(chapters.size() <= source::kMaxChapters);
    RequireTree(chapters);
    for (const source::Chapter& chapter : chapters) {
        fuzz::Require(chapter.start >= 0 && (!chapter.end || *chapter.end >= chapter.start));
        for (const source::ChapterTitle& title : chapter.titles) {
            fuzz::Require(!title.text.empty() && title.text.size() <= 32767);
        }
    }
}

template <typename Body>
void PassErrors(size_t lines, Body body) {
    try {
        body();
    } catch (const chapters::TextError& error) {
        fuzz::Require(error.Line() >= 1 && error.Line() <= lines + 1);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    size_t lines = 0;
    for (const char c : text) {
        lines += c == '\n' ? 1 : 0;
    }
    (void)chapters::LooksLikeSimpleChapters(text);
    PassErrors(lines, [&] { RequireChapters(chapters::ParseSimpleChapters(text)); });
    PassErrors(lines, [&] { RequireChapters(chapters::ReadChapterXml(text).chapters); });
    PassErrors(lines, [&] {
        const auto file = chapters::ReadTagXml(text);
        fuzz::Require(file.tags.size() <= source::kMaxTags);
        RequireTree(file.tags);
        for (const source::Tag& tag : file.tags) {
            fuzz::Require(!tag.name.empty());
        }
    });
    return 0;
}
