#include "sources/chapters/chapter_xml.h"

#include <algorithm>
#include <iterator>

#include "sources/chapters/element_values.h"
#include "sources/chapters/text_error.h"
#include "sources/chapters/xml_tree.h"

namespace chapters {

namespace {

constexpr std::string_view kAtom = "ChapterAtom";
constexpr std::string_view kEdition = "EditionEntry";

// What says nothing that would be missed.
constexpr std::string_view kMeaningless[] = {"EditionUID", "EditionFlagHidden", "EditionFlagDefault", "EditionManaged",
                                             "ChapterCountry"};
// What is not carried over.
constexpr std::string_view kForeign[] = {"EditionDisplay",           "EditionProcessed",     "ChapterStringUID",
                                         "ChapterSegmentUID",        "ChapterSegmentUUID",   "ChapterSkipType",
                                         "ChapterSegmentEditionUID", "ChapterPhysicalEquiv", "ChapterTrack",
                                         "ChapterProcess",           "ChapterTranslate"};

bool IsIn(std::string_view name, const std::string_view* begin, const std::string_view* end) {
    return std::find(begin, end, name) != end;
}

class ChapterReader {
  public:
    ChapterFile Read(const XmlElement& root) {
        if (root.name != "Chapters") {
            throw TextError(root.line, "<Chapters> is missing here");
        }
        for (const XmlElement& child : root.children) {
            if (child.name != kEdition) {
                RefuseUnknown(child, root);
            }
        }
        if (const XmlElement* const edition = EditionOf(root); edition != nullptr) {
            if (root.children.size() > 1) {
                LeaveOut("further editions");
            }
            ReadEdition(*edition);
        }
        return std::move(m_file);
    }

  private:
    static const XmlElement* EditionOf(const XmlElement& root) {
        const auto isDefault = [](const XmlElement& edition) {
            return std::any_of(edition.children.begin(), edition.children.end(), [](const XmlElement& child) {
                return child.name == "EditionFlagDefault" && FlagOf(child);
            });
        };
        const auto found = std::find_if(root.children.begin(), root.children.end(), isDefault);
        if (root.children.empty()) {
            return nullptr;
        }
        return found != root.children.end() ? &*found : &root.children.front();
    }

    void ReadEdition(const XmlElement& edition) {
        for (const XmlElement& child : edition.children) {
            if (child.name == kAtom) {
                ReadAtom(child, 0);
            } else if (child.name == "EditionFlagOrdered") {
                if (FlagOf(child)) {
                    LeaveOut("that they are ordered (<EditionFlagOrdered>)");
                }
            } else {
                PassOver(child, edition);
            }
        }
    }

    // The elements of the XML are no deeper than its parser lets them be.
    void ReadAtom(const XmlElement& atom, INT32 level) { // NOLINT(misc-no-recursion)
        if (m_file.chapters.size() >= source::kMaxChapters || level > source::kMaxDepth) {
            throw TextError(atom.line, "it has more than " + std::to_string(source::kMaxChapters) +
                                           " chapters, or deeper ones than " + std::to_string(source::kMaxDepth + 1));
        }
        source::Chapter chapter;
        chapter.level = level;
        ReadValues(atom, chapter);
        m_file.chapters.push_back(std::move(chapter));
        for (const XmlElement& child : atom.children) {
            if (child.name == kAtom) {
                ReadAtom(child, level + 1);
            }
        }
    }

    void ReadValues(const XmlElement& atom, source::Chapter& chapter) {
        bool hasStart = false;
        for (const XmlElement& child : atom.children) {
            if (child.name == "ChapterTimeStart") {
                chapter.start = TimeOf(child);
                hasStart = true;
            } else if (child.name == "ChapterTimeEnd") {
                chapter.end = TimeOf(child);
            } else if (child.name == "ChapterUID") {
                chapter.uid = NumberOf(child);
            } else if (child.name == "ChapterFlagHidden") {
                chapter.hidden = FlagOf(child);
            } else if (child.name == "ChapterFlagEnabled") {
                chapter.enabled = FlagOf(child);
            } else if (child.name == "ChapterDisplay") {
                chapter.titles.push_back(ReadTitle(child));
            } else if (child.name != kAtom) {
                PassOver(child, atom);
            }
        }
        if (!hasStart) {
            throw TextError(atom.line, "<ChapterTimeStart> is missing in this <ChapterAtom>");
        }
        if (chapter.end && *chapter.end < chapter.start) {
            throw TextError(atom.line, "this <ChapterAtom> ends before it starts");
        }
        std::erase_if(chapter.titles, [](const source::ChapterTitle& title) { return title.text.empty(); });
    }

    // The newer of the two elements for a language goes before the older one.
    source::ChapterTitle ReadTitle(const XmlElement& display) {
        source::ChapterTitle title;
        std::string tag;
        for (const XmlElement& child : display.children) {
            if (child.name == "ChapterString") {
                title.text = TextOf(child);
            } else if (child.name == "ChapterLanguage") {
                title.language = title.language.empty() ? LanguageOf(child) : title.language;
            } else if (child.name == "ChapLanguageIETF" || child.name == "ChapLanguageBCP47") {
                tag = tag.empty() ? LanguageOf(child) : tag;
            } else {
                PassOver(child, display);
            }
        }
        title.language = tag.empty() ? title.language : tag;
        return title;
    }

    void PassOver(const XmlElement& element, const XmlElement& parent) {
        if (IsIn(element.name, std::begin(kForeign), std::end(kForeign))) {
            LeaveOut("<" + element.name + ">");
        } else if (!IsIn(element.name, std::begin(kMeaningless), std::end(kMeaningless))) {
            RefuseUnknown(element, parent);
        }
    }

    void LeaveOut(const std::string& what) {
        if (std::find(m_file.leftOut.begin(), m_file.leftOut.end(), what) == m_file.leftOut.end()) {
            m_file.leftOut.push_back(what);
        }
    }

    ChapterFile m_file;
};

} // namespace

ChapterFile ReadChapterXml(std::string_view text) {
    return ChapterReader().Read(ParseXml(text));
}

} // namespace chapters
