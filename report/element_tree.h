// ElementTree: the elements of a file as nodes: of each parent the first ones of each name, and no more of all than fit
// a page.
//
// Units: bytes. Owner: holds a view of the reader. Threads: one. Errors: std::bad_alloc; what is damaged is marked.
#pragma once

#include "report/element_kinds.h"
#include "report/file_facts.h"
#include "sources/matroska/ebml_reader.h"

namespace report {

class ElementTree {
  public:
    static constexpr size_t kMostOfAName = 24;
    static constexpr size_t kMostNodes = 6000;

    explicit ElementTree(const matroska::EbmlReader& reader) : m_reader(reader) {}

    // Adds the element, with all that it holds, to the children of a parent, as far as there is room.
    void Add(std::vector<Node>& siblings, const matroska::Element& element, const std::optional<ElementKind>& kind,
             int depth = 0);

  private:
    [[nodiscard]] std::string ValueOf(const matroska::Element& element, ValueKind kind) const;
    void AddChildren(Node& node, const matroska::Element& element, const ElementKind& kind, int depth);

    const matroska::EbmlReader& m_reader;
    size_t m_nodes = 0;
};

} // namespace report
