#include "mkvmux/chapter_options.h"

#include "mkvmux/charset.h"
#include "mkvmux/failure.h"
#include "mkvmux/option_kinds.h"
#include "mkvmux/text.h"
#include "records/language_tags.h"

namespace mkvmux {

namespace {

constexpr const wchar_t* kUsualLanguage = L"eng";

} // namespace

ChapterOptionParser::ChapterOptionParser(CLI::App& app) {
    app.option_defaults()->group("Chapters and tags");
    app.add_option("--chapters", m_chapters,
                   "take the chapters from this file, Matroska's XML or lines CHAPTER01=00:00:00.000 and "
                   "CHAPTER01NAME=TITLE, instead of the inputs'")
        ->type_name("FILE")
        ->check(NoOption());
    app.add_option("--chapter-language", m_language,
                   "the language of titles that do not say, such as eng, en or pt-BR (default eng)")
        ->type_name("LANGUAGE")
        ->check(NoOptionOf(app));
    app.add_option("--chapter-charset", m_charset,
                   "the character set of a chapter file in lines, such as UTF-8, ISO-8859-2 or windows-1251")
        ->type_name("CHARSET")
        ->check(NoOptionOf(app));
    app.add_flag("--no-chapters", m_noChapters, "take no chapters from the inputs");
    app.add_option("--global-tags", m_globalTags,
                   "take the tags of the whole file from this one, Matroska's XML, instead of the inputs'")
        ->type_name("FILE")
        ->check(NoOption());
    app.add_flag("--no-global-tags", m_noGlobalTags, "take no tags of the whole file from the inputs");
}

ChapterOptions ChapterOptionParser::Read() const {
    if (m_chapters.empty() && !(m_language.empty() && m_charset.empty())) {
        throw Failure((m_language.empty() ? "--chapter-charset" : "--chapter-language") +
                      std::string(" goes with --chapters only"));
    }
    ChapterOptions options;
    options.chapters = WideFromUtf8(m_chapters);
    options.language = m_language.empty() ? kUsualLanguage : WideFromUtf8(m_language);
    if (!records::FindLanguageCodes(options.language)) {
        throw Failure("--chapter-language: '" + m_language + "' is no language; see mkvmux --list-languages");
    }
    if (!m_charset.empty()) {
        options.charset = CodePageOf(m_charset);
        if (!options.charset) {
            throw Failure("--chapter-charset: '" + m_charset + "' is no character set that is known here");
        }
    }
    options.carryChapters = !m_noChapters;
    options.globalTags = WideFromUtf8(m_globalTags);
    options.carryGlobalTags = !m_noGlobalTags;
    return options;
}

} // namespace mkvmux
