// ElementIndex: the elements of a document by their paths, so that none is searched for among its siblings each time.
//
// It answers what a query with the path would: the first element in the document's order, elements of one name taken
// together. An element's children are looked at when one of them is asked for the first time. Whoever changes the
// document tells it. Owner: references to elements. Threads: those of the document. Errors: null; std::bad_alloc.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "settings/msxml.h"
#include "win/com_ptr.h"

class ElementIndex {
  public:
    explicit ElementIndex(win::ComPtr<IXMLDOMElement> root);

    [[nodiscard]] win::ComPtr<IXMLDOMElement> Find(std::span<const std::wstring> names);
    // The deepest element on the way that is there; how many names lead to it.
    [[nodiscard]] win::ComPtr<IXMLDOMElement> FindDeepest(std::span<const std::wstring> names, size_t& found);

    // An element without child elements is about to be appended where there is none of its path.
    void Added(std::span<const std::wstring> names, win::ComPtr<IXMLDOMElement> element);
    // Another element without child elements took the place of the one that Find finds.
    void Replaced(std::span<const std::wstring> names, win::ComPtr<IXMLDOMElement> element);
    // The one that Find finds is gone.
    void Removed(std::span<const std::wstring> names);

  private:
    // All elements of one path, in the document's order.
    struct Place {
        std::vector<win::ComPtr<IXMLDOMElement>> elements;
        std::unordered_map<std::wstring, std::unique_ptr<Place>> children;
        bool isListed = false; // its children are known
    };
    static void List(Place& place);
    static void AddTo(Place& parent, IXMLDOMNode* node);
    static Place* Child(Place& place, const std::wstring& name);
    [[nodiscard]] Place* PlaceOf(std::span<const std::wstring> names);

    Place m_root;
};
