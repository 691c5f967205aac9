#include "sources/matroska/annotation_reader.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <matroska/KaxChapters.h>
#include <matroska/KaxSemantic.h>
#include <matroska/KaxTags.h>

#include "sources/base/limits.h"

namespace matroska {

namespace {

using namespace libmatroska;

constexpr UINT64 kMaxTextBytes = 32767;
constexpr size_t kMaxLanguageBytes = 100;
constexpr size_t kMaxTitles = 100;              // of one chapter
constexpr size_t kMaxAllText = size_t{1} << 20; // all of them together

// Counts the bytes of all texts of a file.
class TextReader {
  public:
    explicit TextReader(const EbmlReader& reader) : m_reader(reader) {}

    // Empty for one that is too long, or when there is no room left.
    [[nodiscard]] std::string Read(const Element& element) {
        if (element.Size() > kMaxTextBytes) {
            return {};
        }
        std::string text = m_reader.ReadString(element);
        if (text.size() > m_room) {
            return {};
        }
        m_room -= text.size();
        return text;
    }
    // Empty for what is no code and no tag.
    [[nodiscard]] std::string ReadLanguage(const Element& element) {
        std::string text = Read(element);
        const bool isLanguage =
            text.size() <= kMaxLanguageBytes && std::all_of(text.begin(), text.end(), [](char c) {
                return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
            });
        return isLanguage ? text : std::string();
    }

  private:
    const EbmlReader& m_reader;
    size_t m_room = kMaxAllText;
};

class ChapterWalk {
  public:
    explicit ChapterWalk(const EbmlReader& reader) : m_reader(reader), m_texts(reader) {}

    std::vector<source::Chapter> Read(const Element& chapters) {
        std::optional<Element> chosen;
        bool isDefault = false;
        (void)m_reader.ForEachChild(chapters, [&](const Element& edition) {
            if (edition.id == IdOf<KaxEditionEntry>() && (!chosen || (!isDefault && IsDefault(edition)))) {
                isDefault = IsDefault(edition);
                chosen = edition;
            }
        });
        if (chosen) {
            ReadAtoms(*chosen, 0);
        }
        return std::move(m_chapters);
    }

  private:
    [[nodiscard]] bool IsDefault(const Element& edition) const {
        bool isDefault = false;
        (void)m_reader.ForEachChild(edition, [&](const Element& child) {
            isDefault = isDefault || (child.id == IdOf<KaxEditionFlagDefault>() && m_reader.ReadUnsigned(child) == 1);
        });
        return isDefault;
    }

    // No deeper than the bound.
    void ReadAtoms(const Element& parent, INT32 level) { // NOLINT(misc-no-recursion)
        (void)m_reader.ForEachChild(parent, [&](const Element& child) {
            if (child.id == IdOf<KaxChapterAtom>() && m_chapters.size() < source::kMaxChapters) {
                ReadAtom(child, level);
            }
        });
    }

    void ReadAtom(const Element& atom, INT32 level) { // NOLINT(misc-no-recursion)
        source::Chapter chapter;
        chapter.level = level;
        std::optional<REFERENCE_TIME> start;
        (void)m_reader.ForEachChild(atom, [&](const Element& child) {
            if (child.id == IdOf<KaxChapterTimeStart>()) {
                start = TimeOf(child);
            } else if (child.id == IdOf<KaxChapterTimeEnd>()) {
                chapter.end = TimeOf(child);
            } else if (child.id == IdOf<KaxChapterUID>()) {
                chapter.uid = m_reader.ReadUnsigned(child);
            } else if (child.id == IdOf<KaxChapterFlagHidden>()) {
                chapter.hidden = m_reader.ReadUnsigned(child) == 1;
            } else if (child.id == IdOf<KaxChapterFlagEnabled>()) {
                chapter.enabled = m_reader.ReadUnsigned(child, 1) == 1;
            } else if (child.id == IdOf<KaxChapterDisplay>() && chapter.titles.size() < kMaxTitles) {
                ReadTitle(child, chapter);
            }
        });
        if (!start) {
            return; // and its parts with it
        }
        chapter.start = *start;
        chapter.end = chapter.end && *chapter.end >= *start ? chapter.end : std::nullopt;
        m_chapters.push_back(std::move(chapter));
        if (level < source::kMaxDepth) {
            ReadAtoms(atom, level + 1);
        }
    }

    void ReadTitle(const Element& display, source::Chapter& chapter) {
        source::ChapterTitle title;
        std::string tag;
        bool saysLanguage = false;
        (void)m_reader.ForEachChild(display, [&](const Element& child) {
            if (child.id == IdOf<KaxChapterString>()) {
                title.text = m_texts.Read(child);
            } else if (child.id == IdOf<KaxChapterLanguage>() && !saysLanguage) {
                title.language = m_texts.ReadLanguage(child);
                saysLanguage = true;
            } else if (child.id == IdOf<KaxChapLanguageIETF>() && tag.empty()) {
                tag = m_texts.ReadLanguage(child);
            }
        });
        title.language = !tag.empty() ? tag : (saysLanguage ? title.language : "eng"); // what the format says
        if (!title.text.empty()) {
            chapter.titles.push_back(std::move(title));
        }
    }

    // None for one that is later than any file.
    [[nodiscard]] std::optional<REFERENCE_TIME> TimeOf(const Element& element) const {
        constexpr UINT64 kNsInUnit = 100;
        const UINT64 time = m_reader.ReadUnsigned(element) / kNsInUnit;
        return time <= UINT64{source::kMaxTime} ? std::optional(static_cast<REFERENCE_TIME>(time)) : std::nullopt;
    }

    const EbmlReader& m_reader;
    TextReader m_texts;
    std::vector<source::Chapter> m_chapters;
};

class TagWalk {
  public:
    TagWalk(const EbmlReader& reader, std::vector<source::Tag>& tags)
        : m_reader(reader), m_texts(reader), m_tags(tags) {}

    void Read(const Element& element) {
        (void)m_reader.ForEachChild(element, [this](const Element& child) {
            if (child.id == IdOf<KaxTag>()) {
                ReadTag(child);
            }
        });
    }

  private:
    void ReadTag(const Element& element) {
        source::Tag common;
        bool isGlobal = true;
        (void)m_reader.ForEachChild(element, [&](const Element& child) {
            if (child.id == IdOf<KaxTagTargets>()) {
                isGlobal = ReadTargets(child, common) && isGlobal;
            }
        });
        if (isGlobal) {
            ReadSimples(element, common);
        }
    }

    // Whether they name nothing but the whole; an identifier of 0 stands for that, too.
    bool ReadTargets(const Element& targets, source::Tag& common) {
        bool isGlobal = true;
        (void)m_reader.ForEachChild(targets, [&](const Element& child) {
            if (child.id == IdOf<KaxTagTargetTypeValue>()) {
                const UINT64 type = m_reader.ReadUnsigned(child);
                common.targetType = type <= std::numeric_limits<UINT32>::max() ? static_cast<UINT32>(type) : 0;
            } else if (child.id == IdOf<KaxTagTargetType>()) {
                common.target = m_texts.Read(child);
            } else if (child.id == IdOf<KaxTagTrackUID>() || child.id == IdOf<KaxTagEditionUID>() ||
                       child.id == IdOf<KaxTagChapterUID>() || child.id == IdOf<KaxTagAttachmentUID>()) {
                isGlobal = isGlobal && m_reader.ReadUnsigned(child) == 0;
            }
        });
        return isGlobal;
    }

    // No deeper than the bound.
    void ReadSimples(const Element& parent, const source::Tag& common) { // NOLINT(misc-no-recursion)
        (void)m_reader.ForEachChild(parent, [&](const Element& child) {
            if (child.id == IdOf<KaxTagSimple>() && m_tags.size() < source::kMaxTags) {
                ReadSimple(child, common);
            }
        });
    }

    void ReadSimple(const Element& simple, const source::Tag& common) { // NOLINT(misc-no-recursion)
        source::Tag tag = common;
        std::string language;
        bool isText = true;
        (void)m_reader.ForEachChild(simple, [&](const Element& child) {
            if (child.id == IdOf<KaxTagName>()) {
                tag.name = m_texts.Read(child);
            } else if (child.id == IdOf<KaxTagString>()) {
                tag.value = m_texts.Read(child);
            } else if (child.id == IdOf<KaxTagLangue>()) {
                language = m_texts.ReadLanguage(child);
            } else if (child.id == IdOf<KaxTagLanguageIETF>()) {
                tag.language = m_texts.ReadLanguage(child);
            }
            isText = isText && child.id != IdOf<KaxTagBinary>();
        });
        if (tag.name.empty() || !isText) {
            return; // and what says more of it
        }
        tag.language = tag.language.empty() ? language : tag.language;
        m_tags.push_back(std::move(tag));
        source::Tag deeper = common;
        if (++deeper.level <= source::kMaxDepth) {
            ReadSimples(simple, deeper);
        }
    }

    const EbmlReader& m_reader;
    TextReader m_texts;
    std::vector<source::Tag>& m_tags;
};

} // namespace

std::vector<source::Chapter> ReadChapters(const EbmlReader& reader, const Element& chapters) {
    return ChapterWalk(reader).Read(chapters);
}

void ReadGlobalTags(const EbmlReader& reader, const Element& element, std::vector<source::Tag>& tags) {
    TagWalk(reader, tags).Read(element);
}

} // namespace matroska
