#include "settings/xml_index.h"

#include <utility>

#include "settings/xml_nodes.h"
#include "win/bstr.h"

namespace {

bool HasNoNamespace(IXMLDOMNode* node) {
    win::Bstr space;
    return SUCCEEDED(node->get_namespaceURI(space.Put())) && space.View().empty();
}

} // namespace

ElementIndex::ElementIndex(win::ComPtr<IXMLDOMElement> root) {
    m_root.elements.push_back(std::move(root));
}

win::ComPtr<IXMLDOMElement> ElementIndex::Find(std::span<const std::wstring> names) {
    const Place* const place = PlaceOf(names);
    return place == nullptr ? nullptr : place->elements.front();
}

win::ComPtr<IXMLDOMElement> ElementIndex::FindDeepest(std::span<const std::wstring> names, size_t& found) {
    Place* place = &m_root;
    for (found = 0; found < names.size(); ++found) {
        Place* const child = Child(*place, names[found]);
        if (child == nullptr) {
            break;
        }
        place = child;
    }
    return place->elements.front();
}

void ElementIndex::Added(std::span<const std::wstring> names, win::ComPtr<IXMLDOMElement> element) {
    Place* const parent = PlaceOf(names.first(names.size() - 1));
    if (parent == nullptr || Child(*parent, names.back()) != nullptr) {
        return; // it was found when the parent's children were listed
    }
    auto place = std::make_unique<Place>();
    place->elements.push_back(std::move(element));
    place->isListed = true;
    parent->children.emplace(names.back(), std::move(place));
}

void ElementIndex::Replaced(std::span<const std::wstring> names, win::ComPtr<IXMLDOMElement> element) {
    if (Place* const place = PlaceOf(names)) {
        place->elements.front() = std::move(element);
    }
}

void ElementIndex::Removed(std::span<const std::wstring> names) {
    Place* const parent = names.empty() ? nullptr : PlaceOf(names.first(names.size() - 1));
    Place* const place = parent == nullptr ? nullptr : Child(*parent, names.back());
    if (place == nullptr) {
        return;
    }
    if (place->elements.size() == 1) {
        parent->children.erase(names.back());
        return;
    }
    place->elements.erase(place->elements.begin());
    place->children.clear();
    place->isListed = false;
}

void ElementIndex::List(Place& place) {
    if (place.isListed) {
        return;
    }
    place.children.clear();
    for (const auto& element : place.elements) {
        ForEachChild(element.Get(), [&place](IXMLDOMNode* node) {
            AddTo(place, node);
            return true;
        });
    }
    place.isListed = true;
}

void ElementIndex::AddTo(Place& parent, IXMLDOMNode* node) {
    win::Bstr name;
    if (!IsElement(node) || !HasNoNamespace(node) || node->get_nodeName(name.Put()) != S_OK) {
        return;
    }
    win::ComPtr<IXMLDOMElement> element;
    if (SUCCEEDED(node->QueryInterface(IID_IXMLDOMElement, element.PutVoid()))) {
        auto& child = parent.children[std::wstring(name.View())];
        if (!child) {
            child = std::make_unique<Place>();
        }
        child->elements.push_back(std::move(element));
    }
}

ElementIndex::Place* ElementIndex::Child(Place& place, const std::wstring& name) {
    List(place);
    const auto child = place.children.find(name);
    return child == place.children.end() ? nullptr : child->second.get();
}

ElementIndex::Place* ElementIndex::PlaceOf(std::span<const std::wstring> names) {
    Place* place = &m_root;
    for (const std::wstring& name : names) {
        place = place == nullptr ? nullptr : Child(*place, name);
    }
    return place;
}
