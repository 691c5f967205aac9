#include "report/element_tree.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "report/html_text.h"
#include "sources/base/printable.h"

namespace report {

namespace {

using matroska::Element;

constexpr int kMostDepth = 12;
constexpr size_t kMostValueChars = 120;
constexpr UINT64 kMostTextBytes = 4096;
constexpr const char* kUnknown = "unknown";

std::string Hex(UINT32 id) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%" PRIX32, static_cast<uint32_t>(id));
    return text;
}

std::string Decimal(double number) {
    char text[40];
    std::snprintf(text, sizeof(text), "%.10g", number);
    return text;
}

INT64 SignedOf(UINT64 value, UINT64 bytes) {
    constexpr unsigned kBits = 64;
    const auto shift = static_cast<unsigned>(kBits - 8 * std::clamp<UINT64>(bytes, 1, 8));
    return static_cast<INT64>(value << shift) >> shift;
}

// Where the elements of this name are counted that are not kept.
Node& RestOf(std::vector<Node>& siblings, const std::string& name) {
    const auto rest = std::find_if(siblings.begin(), siblings.end(),
                                   [&](const Node& node) { return node.more != 0 && node.name == name; });
    if (rest != siblings.end()) {
        return *rest;
    }
    Node& fresh = siblings.emplace_back();
    fresh.name = name;
    return fresh;
}

} // namespace

void ElementTree::Add(std::vector<Node>& siblings, const Element& element, const std::optional<ElementKind>& kind,
                      int depth) {
    const std::string name = kind ? kind->name : kUnknown;
    const auto kept = std::count_if(siblings.begin(), siblings.end(),
                                    [&](const Node& node) { return node.more == 0 && node.name == name; });
    const UINT64 size = element.end - element.start;
    if (static_cast<size_t>(kept) >= kMostOfAName || m_nodes >= kMostNodes) {
        Node& rest = RestOf(siblings, name);
        rest.start = rest.more == 0 ? element.start : rest.start;
        rest.size += size;
        ++rest.more;
        return;
    }
    ++m_nodes;
    Node node;
    node.name = name;
    node.start = element.start;
    node.size = size;
    node.isWhole = element.whole;
    node.value = kind ? ValueOf(element, kind->value) : Hex(element.id);
    if (kind && kind->value == ValueKind::Master) {
        AddChildren(node, element, *kind, depth);
    }
    siblings.push_back(std::move(node));
}

void ElementTree::AddChildren(Node& node, const Element& element, const ElementKind& kind, int depth) {
    if (depth >= kMostDepth) {
        return;
    }
    const bool isIntact = m_reader.ForEachChild(
        element, [&](const Element& child) { Add(node.children, child, KindOf(*kind.context, child.id), depth + 1); });
    node.isWhole = node.isWhole && (isIntact || element.unknownSize);
}

std::string ElementTree::ValueOf(const Element& element, ValueKind kind) const {
    switch (kind) {
    case ValueKind::Unsigned:
        return std::to_string(m_reader.ReadUnsigned(element));
    case ValueKind::Signed:
        return std::to_string(SignedOf(m_reader.ReadUnsigned(element), element.Size()));
    case ValueKind::Float:
        return Decimal(m_reader.ReadFloat(element));
    case ValueKind::Text: {
        Element start = element;
        start.end = std::min(start.end, start.data + kMostTextBytes);
        return source::Printable(m_reader.ReadString(start), kMostValueChars);
    }
    case ValueKind::Date:
        return DateText(SignedOf(m_reader.ReadUnsigned(element), element.Size()));
    case ValueKind::Master:
    case ValueKind::Binary:
        break;
    }
    return {};
}

} // namespace report
