#include "tests/support/ebml_reader.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace test_support {

namespace {

constexpr uint64_t kChapterDisplayId = 0x80;
constexpr uint32_t kMaxIdBytes = 4;
constexpr uint32_t kMaxSizeBytes = 8;
constexpr int kMaxDepth = 16;         // nothing well-formed nests deeper
constexpr size_t kMaxProblems = 1000; // a hostile file must not fill the memory with complaints
constexpr uint64_t kMaxIntegerBytes = 8;
constexpr uint64_t kDateBytes = 8;

std::optional<EbmlNumber> ReadNumber(ByteView bytes, uint32_t maxLength) {
    if (bytes.empty() || bytes[0] == 0) {
        return std::nullopt;
    }
    const auto length = static_cast<uint32_t>(std::countl_zero(bytes[0])) + 1;
    if (length > maxLength || length > bytes.size()) {
        return std::nullopt;
    }
    uint64_t value = 0;
    for (uint32_t i = 0; i < length; ++i) {
        value = value << 8 | bytes[i];
    }
    const uint64_t marker = uint64_t{1} << (7 * length);
    return EbmlNumber{value, length, (value & (marker - 1)) == marker - 1};
}

class Parser {
  public:
    Parser(ByteView file, EbmlTree& tree) : m_file(file), m_tree(tree) {}

    // Reads elements from `begin` to `end` as children of `parent`. Ends early at an element that cannot be one when
    // the parent's own size is unknown. Returns where the reading ended.
    uint64_t ReadChildren(uint64_t begin, uint64_t end, uint32_t parent, bool openEnded, int depth,
                          std::vector<EbmlElement>& children);

  private:
    void Complain(uint64_t offset, const std::string& what) { Note(m_tree.problems, offset, what); }
    // For what is wrong only because the file ends at `end`, if it does.
    void ComplainOfCut(uint64_t offset, uint64_t end, const std::string& what) {
        Note(end == m_file.size() ? m_tree.cuts : m_tree.problems, offset, what);
    }
    static void Note(std::vector<std::string>& list, uint64_t offset, const std::string& what);
    void NoteBadHead(uint64_t offset, uint64_t end, const std::string& what);
    bool ReadHead(uint64_t offset, uint64_t end, EbmlElement& element);
    bool FitSize(uint64_t end, EbmlElement& element);
    void ReadContent(EbmlElement& element, int depth);
    void CheckLength(const EbmlElement& element);

    const ByteView m_file;
    EbmlTree& m_tree;
};

void Parser::Note(std::vector<std::string>& list, uint64_t offset, const std::string& what) {
    if (list.size() < kMaxProblems) {
        list.push_back("@" + std::to_string(offset) + ": " + what);
    }
}

void Parser::NoteBadHead(uint64_t offset, uint64_t end, const std::string& what) {
    if (end - offset < kMaxIdBytes + kMaxSizeBytes) {
        ComplainOfCut(offset, end, what); // it may go on behind the cut
    } else {
        Complain(offset, what);
    }
}

bool Parser::ReadHead(uint64_t offset, uint64_t end, EbmlElement& element) {
    const ByteView rest = m_file.subspan(static_cast<size_t>(offset), static_cast<size_t>(end - offset));
    const std::optional<EbmlNumber> id = ReadEbmlId(rest);
    if (!id) {
        NoteBadHead(offset, end, "no valid element identifier");
        return false;
    }
    const std::optional<EbmlNumber> size = ReadEbmlSize(rest.subspan(id->length));
    if (!size) {
        NoteBadHead(offset, end, "no valid size of " + ElementName(static_cast<uint32_t>(id->value)));
        return false;
    }
    element.id = static_cast<uint32_t>(id->value);
    element.offset = offset;
    element.idLength = id->length;
    element.sizeLength = size->length;
    element.unknownSize = size->allOnes;
    element.dataSize = size->value;
    return FitSize(end, element);
}

// An element that reaches beyond its parent is cut to what is there, so that its content can still be read.
bool Parser::FitSize(uint64_t end, EbmlElement& element) {
    const uint64_t room = end - element.DataOffset();
    if (element.unknownSize) {
        element.dataSize = room;
        if (!MayHaveUnknownSize(element.id)) {
            Complain(element.offset, element.Name() + " has an unknown size");
            return false;
        }
    } else if (element.dataSize > room) {
        ComplainOfCut(element.offset, end,
                      element.Name() + " of " + std::to_string(element.dataSize) + " bytes reaches beyond the " +
                          std::to_string(room) + " that are there");
        element.dataSize = room;
        element.cut = true;
    }
    return true;
}

void Parser::CheckLength(const EbmlElement& element) {
    const EbmlElementInfo* const info = FindElementInfo(element.id);
    const uint64_t size = element.dataSize;
    bool fits = true;
    switch (info == nullptr ? EbmlType::Binary : info->type) {
    case EbmlType::Unsigned:
    case EbmlType::Signed:
        fits = size <= kMaxIntegerBytes;
        break;
    case EbmlType::Float:
        fits = size == 0 || size == sizeof(float) || size == sizeof(double);
        break;
    case EbmlType::Date:
        fits = size == 0 || size == kDateBytes;
        break;
    default:
        break;
    }
    if (!fits) {
        Complain(element.offset, element.Name() + " has an impossible length of " + std::to_string(size));
    }
}

void Parser::ReadContent(EbmlElement& element, int depth) {
    const EbmlElementInfo* const info = FindElementInfo(element.id);
    if (info == nullptr) {
        Complain(element.offset, "unknown element " + element.Name());
        return;
    }
    if (info->type != EbmlType::Master) {
        CheckLength(element);
        return;
    }
    if (depth >= kMaxDepth) {
        Complain(element.offset, element.Name() + " is nested too deeply");
        return;
    }
    const uint64_t reached =
        ReadChildren(element.DataOffset(), element.End(), element.id, element.unknownSize, depth + 1, element.children);
    if (element.unknownSize) {
        element.dataSize = reached - element.DataOffset();
    }
}

uint64_t Parser::ReadChildren(uint64_t begin, uint64_t end, uint32_t parent, bool openEnded, int depth,
                              std::vector<EbmlElement>& children) {
    uint64_t offset = begin;
    while (offset < end) {
        EbmlElement element;
        const size_t problemsBefore = m_tree.problems.size();
        const size_t cutsBefore = m_tree.cuts.size();
        if (!ReadHead(offset, end, element)) {
            return end;
        }
        if (!IsAllowedIn(element.id, parent)) {
            if (openEnded) {
                m_tree.problems.resize(problemsBefore); // whoever reads it next says it
                m_tree.cuts.resize(cutsBefore);
                return offset;
            }
            Complain(offset, element.Name() + " cannot stand in " + (parent == 0 ? "the file" : ElementName(parent)));
        }
        ReadContent(element, depth);
        offset = element.End();
        children.push_back(std::move(element));
    }
    return offset;
}

template <typename Elements>
const EbmlElement* FindFirst(const Elements& elements, uint32_t id) {
    const auto found =
        std::find_if(elements.begin(), elements.end(), [id](const EbmlElement& element) { return element.id == id; });
    return found == elements.end() ? nullptr : &*found;
}

} // namespace

std::optional<EbmlNumber> ReadEbmlId(ByteView bytes) {
    const std::optional<EbmlNumber> id = ReadNumber(bytes, kMaxIdBytes);
    if (!id || id->allOnes) {
        return std::nullopt;
    }
    // A shorter spelling of the same identifier must not exist: its bits would fit one byte less.
    const uint64_t bits = id->value & ((uint64_t{1} << (7 * id->length)) - 1);
    const uint64_t shorterMarker = uint64_t{1} << (7 * (id->length - 1));
    const bool fitsShorter = id->length > 1 && bits < shorterMarker - 1;
    // All zeros are reserved, but one byte of them was given away before.
    const bool isReserved = bits == 0 && id->value != kChapterDisplayId;
    return isReserved || fitsShorter ? std::nullopt : id;
}

std::optional<EbmlNumber> ReadEbmlSize(ByteView bytes) {
    std::optional<EbmlNumber> size = ReadNumber(bytes, kMaxSizeBytes);
    if (size) {
        size->value &= (uint64_t{1} << (7 * size->length)) - 1;
    }
    return size;
}

const EbmlElement* EbmlElement::Child(uint32_t childId) const {
    return FindFirst(children, childId);
}

std::vector<const EbmlElement*> EbmlElement::Children(uint32_t childId) const {
    std::vector<const EbmlElement*> found;
    for (const EbmlElement& child : children) {
        if (child.id == childId) {
            found.push_back(&child);
        }
    }
    return found;
}

const EbmlElement* EbmlTree::Child(uint32_t id) const {
    return FindFirst(elements, id);
}

EbmlTree ReadEbml(ByteView file) {
    EbmlTree tree;
    Parser(file, tree).ReadChildren(0, file.size(), 0, false, 0, tree.elements);
    return tree;
}

} // namespace test_support
