// The child nodes of a node, one after the other: asking for them by their numbers takes longer with each.
//
// Threads: those of the document. Errors: none; what cannot be reached ends it.
#pragma once

#include <utility>

#include "settings/msxml.h"
#include "win/com_ptr.h"

// The visitor takes an IXMLDOMNode*, and returns false to see no more.
template <typename Visitor>
void ForEachChild(IXMLDOMNode* parent, Visitor&& visit) {
    win::ComPtr<IXMLDOMNode> node;
    parent->get_firstChild(node.Put());
    while (node && visit(node.Get())) {
        win::ComPtr<IXMLDOMNode> next;
        node->get_nextSibling(next.Put());
        node = std::move(next);
    }
}

[[nodiscard]] inline bool IsElement(IXMLDOMNode* node) {
    DOMNodeType type = NODE_INVALID;
    return node->get_nodeType(&type) == S_OK && type == NODE_ELEMENT;
}
