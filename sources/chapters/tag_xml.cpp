#include "sources/chapters/tag_xml.h"

#include <limits>
#include <string>

#include "sources/chapters/element_values.h"
#include "sources/chapters/text_error.h"
#include "sources/chapters/xml_tree.h"

namespace chapters {

namespace {

constexpr std::string_view kSimple = "Simple";

// What all tags of a Tag have in common.
struct Target {
    UINT32 type = 0;
    std::string name;
    bool isForeign = false;
};

Target ReadTarget(const XmlElement& targets) {
    Target target;
    for (const XmlElement& child : targets.children) {
        if (child.name == "TargetTypeValue") {
            const UINT64 type = NumberOf(child);
            if (type > std::numeric_limits<UINT32>::max()) {
                throw TextError(child.line, "<TargetTypeValue> is too large");
            }
            target.type = static_cast<UINT32>(type);
        } else if (child.name == "TargetType") {
            target.name = Trimmed(TextOf(child));
        } else if (child.name == "TrackUID" || child.name == "EditionUID" || child.name == "ChapterUID" ||
                   child.name == "AttachmentUID") {
            target.isForeign = target.isForeign || NumberOf(child) != 0; // 0 stands for the whole file
        } else {
            RefuseUnknown(child, targets);
        }
    }
    return target;
}

class TagReader {
  public:
    TagFile Read(const XmlElement& root) {
        if (root.name != "Tags") {
            throw TextError(root.line, "<Tags> is missing here");
        }
        for (const XmlElement& child : root.children) {
            if (child.name != "Tag") {
                RefuseUnknown(child, root);
            }
            ReadTag(child);
        }
        return std::move(m_file);
    }

  private:
    void ReadTag(const XmlElement& tag) {
        Target target;
        for (const XmlElement& child : tag.children) {
            if (child.name == "Targets") {
                target = ReadTarget(child);
            } else if (child.name != kSimple) {
                RefuseUnknown(child, tag);
            }
        }
        if (target.isForeign) {
            ++m_file.foreign;
            return;
        }
        for (const XmlElement& child : tag.children) {
            if (child.name == kSimple) {
                ReadSimple(child, target, 0);
            }
        }
    }

    // The elements of the XML are no deeper than its parser lets them be.
    void ReadSimple(const XmlElement& simple, const Target& target, INT32 level) { // NOLINT(misc-no-recursion)
        if (m_file.tags.size() >= source::kMaxTags || level > source::kMaxDepth) {
            throw TextError(simple.line, "it has more than " + std::to_string(source::kMaxTags) +
                                             " tags, or deeper ones than " + std::to_string(source::kMaxDepth + 1));
        }
        source::Tag tag;
        tag.level = level;
        tag.targetType = target.type;
        tag.target = target.name;
        if (!ReadValues(simple, tag)) {
            ++m_file.binary;
            return;
        }
        m_file.tags.push_back(std::move(tag));
        for (const XmlElement& child : simple.children) {
            if (child.name == kSimple) {
                ReadSimple(child, target, level + 1);
            }
        }
    }

    // False for one whose value is no text.
    static bool ReadValues(const XmlElement& simple, source::Tag& tag) {
        bool isText = true;
        std::string language;
        for (const XmlElement& child : simple.children) {
            if (child.name == "Name") {
                tag.name = TextOf(child);
            } else if (child.name == "String") {
                tag.value = TextOf(child);
            } else if (child.name == "TagLanguage") {
                language = LanguageOf(child);
            } else if (child.name == "TagLanguageIETF" || child.name == "TagLanguageBCP47") {
                tag.language = LanguageOf(child);
            } else if (child.name == "Binary") {
                isText = false;
            } else if (child.name != kSimple && child.name != "DefaultLanguage") {
                RefuseUnknown(child, simple);
            }
        }
        tag.language = tag.language.empty() ? language : tag.language;
        if (tag.name.empty()) {
            throw TextError(simple.line, "<Name> is missing in this <Simple>");
        }
        return isText;
    }

    TagFile m_file;
};

} // namespace

TagFile ReadTagXml(std::string_view text) {
    return TagReader().Read(ParseXml(text));
}

} // namespace chapters
