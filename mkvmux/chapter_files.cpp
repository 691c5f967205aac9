#include "mkvmux/chapter_files.h"

#include <span>

#include "mkvmux/failure.h"
#include "mkvmux/file_bytes.h"
#include "mkvmux/text.h"
#include "sources/chapters/chapter_xml.h"
#include "sources/chapters/simple_chapters.h"
#include "sources/chapters/tag_xml.h"
#include "sources/chapters/text_error.h"
#include "sources/text/text_decoder.h"
#include "win/code_page_text.h"

namespace mkvmux {

namespace {

constexpr UINT64 kMaxFileBytes = UINT64{8} << 20;

bool HasByteOrderMark(std::string_view bytes) {
    return bytes.starts_with("\xEF\xBB\xBF") || bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

std::string Decode(const std::string& bytes, const std::optional<unsigned>& charset) {
    if (charset && !HasByteOrderMark(bytes)) {
        return Utf8FromWide(win::WideFromNarrow(*charset, bytes));
    }
    return subtitles::DecodeText({reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()});
}

// What the body finds wrong gets the name of the file and the line.
template <typename Body>
auto Located(const std::wstring& path, Body body) {
    try {
        return body();
    } catch (const chapters::TextError& error) {
        throw Failure(Utf8FromWide(path) + ":" + std::to_string(error.Line()) + ": " + error.what());
    }
}

std::vector<source::Chapter> ReadXml(const std::wstring& path, const std::string& text, Console& console) {
    chapters::ChapterFile file = chapters::ReadChapterXml(text);
    std::string leftOut;
    for (const std::string& what : file.leftOut) {
        leftOut += (leftOut.empty() ? "" : ", ") + what;
    }
    if (!leftOut.empty()) {
        console.Warn(Utf8FromWide(path) + ": left out of the chapters: " + leftOut);
    }
    return std::move(file.chapters);
}

} // namespace

std::vector<source::Chapter> ReadChapterFile(const ChapterOptions& options, Console& console) {
    const std::wstring& path = options.chapters;
    const std::string bytes = ReadWholeFile(path, kMaxFileBytes);
    auto chapters = Located(path, [&] {
        // XML says itself what its characters are.
        const std::string text = Decode(bytes, {});
        if (!chapters::LooksLikeSimpleChapters(text)) {
            return ReadXml(path, text, console);
        }
        return chapters::ParseSimpleChapters(options.charset ? Decode(bytes, options.charset) : text);
    });
    for (source::Chapter& chapter : chapters) {
        for (source::ChapterTitle& title : chapter.titles) {
            title.language = title.language.empty() ? Utf8FromWide(options.language) : title.language;
        }
    }
    return chapters;
}

std::vector<source::Tag> ReadTagFile(const std::wstring& path, Console& console) {
    const std::string text = Decode(ReadWholeFile(path, kMaxFileBytes), {});
    chapters::TagFile file = Located(path, [&] { return chapters::ReadTagXml(text); });
    if (file.foreign > 0) {
        console.Warn(Utf8FromWide(path) + ": left out: " + std::to_string(file.foreign) +
                     " tags of single tracks, editions, chapters or attachments");
    }
    if (file.binary > 0) {
        console.Warn(Utf8FromWide(path) + ": left out: " + std::to_string(file.binary) +
                     " tags whose value is no text");
    }
    return std::move(file.tags);
}

} // namespace mkvmux
