#include "mkv/chapters_element.h"

#include <algorithm>
#include <span>

#include <matroska/KaxSemantic.h>

#include "dshow/ref_time.h"
#include "mkv/element_values.h"
#include "records/language_tags.h"

namespace mkv {

namespace {

using libmatroska::KaxChapterAtom;
using records::Chapter;
using ChapterList = std::span<const Chapter>;

// A chapter that stands in a list, with all behind it that belongs to it.
struct Part {
    const Chapter* chapter;
    ChapterList titles; // further ones
    ChapterList parts;
};

// Chapters of that level and what is deeper; one that is deeper than it can be is a part of the one before all the
// same.
std::vector<Part> PartsOf(ChapterList list) {
    std::vector<Part> parts;
    while (!list.empty()) {
        const INT32 level = list.front().level;
        const auto isTitle = [](const Chapter& chapter) { return chapter.level == MuxLevel_FurtherTitle; };
        const auto titlesEnd = std::find_if_not(list.begin() + 1, list.end(), isTitle);
        const auto end = std::find_if(
            titlesEnd, list.end(), [&](const Chapter& chapter) { return !isTitle(chapter) && chapter.level <= level; });
        parts.push_back({&list.front(), ChapterList(list.begin() + 1, titlesEnd), ChapterList(titlesEnd, end)});
        list = ChapterList(end, list.end());
    }
    std::stable_sort(parts.begin(), parts.end(),
                     [](const Part& a, const Part& b) { return a.chapter->start < b.chapter->start; });
    return parts;
}

class AtomWriter {
  public:
    explicit AtomWriter(bool isWebM) : m_isWebM(isWebM) {}

    // No deeper than levels go.
    void addAll(libebml::EbmlMaster& parent, ChapterList list) const { // NOLINT(misc-no-recursion)
        for (const Part& part : PartsOf(list)) {
            auto& atom = libebml::AddNewChild<KaxChapterAtom>(parent);
            fill(atom, *part.chapter);
            addTitle(atom, *part.chapter);
            for (const Chapter& title : part.titles) {
                addTitle(atom, title);
            }
            addAll(atom, part.parts);
        }
    }

  private:
    void fill(KaxChapterAtom& atom, const Chapter& chapter) const {
        SetChild<libmatroska::KaxChapterUID>(atom, chapter.uid);
        SetChild<libmatroska::KaxChapterTimeStart>(atom, nsOf(chapter.start));
        if (chapter.end != MuxChapterTime_None) {
            SetChild<libmatroska::KaxChapterTimeEnd>(atom, nsOf(chapter.end));
        }
        if (!m_isWebM) {
            SetToldChild<libmatroska::KaxChapterFlagHidden>(atom, UINT64{chapter.hidden ? 1U : 0U});
            SetToldChild<libmatroska::KaxChapterFlagEnabled>(atom, UINT64{chapter.disabled ? 0U : 1U});
        }
    }

    void addTitle(KaxChapterAtom& atom, const Chapter& title) const {
        if (title.title.empty()) {
            return;
        }
        const auto language = records::FindLanguageCodes(title.language).value_or(records::LanguageCodes{"und", "und"});
        auto& display = libebml::AddNewChild<libmatroska::KaxChapterDisplay>(atom);
        SetUtf8Child<libmatroska::KaxChapterString>(display, win::Utf8FromWide(title.title));
        SetToldChild<libmatroska::KaxChapterLanguage>(display, language.bibliographic);
        if (!m_isWebM) {
            SetChild<libmatroska::KaxChapLanguageIETF>(display, language.tag);
        }
    }

    [[nodiscard]] static UINT64 nsOf(INT64 time) { return static_cast<UINT64>(time * kNsPerReferenceTime); }

    const bool m_isWebM;
};

} // namespace

std::unique_ptr<libmatroska::KaxChapters> MakeChapters(const std::vector<Chapter>& chapters, bool isWebM,
                                                       CChapterIdentifiers& identifiers) {
    if (chapters.empty()) {
        return nullptr;
    }
    const std::vector<Chapter> completed = identifiers.complete(chapters);
    auto element = std::make_unique<libmatroska::KaxChapters>();
    auto& edition = libebml::AddNewChild<libmatroska::KaxEditionEntry>(*element);
    if (!isWebM) {
        SetChild<libmatroska::KaxEditionUID>(edition, identifiers.edition());
        SetToldChild<libmatroska::KaxEditionFlagHidden>(edition, UINT64{0});
        SetToldChild<libmatroska::KaxEditionFlagDefault>(edition, UINT64{0});
    }
    AtomWriter(isWebM).addAll(edition, completed);
    return element;
}

} // namespace mkv
