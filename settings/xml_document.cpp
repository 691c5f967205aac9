#include "settings/xml_document.h"

#include <utility>
#include <vector>

#include "settings/xml_names.h"
#include "settings/xml_nodes.h"
#include "settings/xml_survey.h"
#include "settings/xml_value.h"
#include "win/variant.h"

namespace {

constexpr std::wstring_view kFreshDocument = L"<XMLSettings version=\"1.0\"></XMLSettings>";
constexpr std::wstring_view kDeclarationTarget = L"xml";
constexpr std::wstring_view kDeclarationData = L" version=\"1.0\" encoding=\"UTF-8\"";

win::ComPtr<IStream> StreamOf(const std::string& bytes) {
    win::ComPtr<IStream> stream;
    if (FAILED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put())) ||
        FAILED(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr)) ||
        FAILED(stream->Seek({}, STREAM_SEEK_SET, nullptr))) {
        return {};
    }
    return stream;
}

bool ReadAll(IStream* stream, std::string& bytes) {
    STATSTG facts{};
    if (FAILED(stream->Stat(&facts, STATFLAG_NONAME)) || FAILED(stream->Seek({}, STREAM_SEEK_SET, nullptr))) {
        return false;
    }
    bytes.resize(facts.cbSize.LowPart);
    ULONG got = 0;
    return facts.cbSize.HighPart == 0 &&
           SUCCEEDED(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &got)) && got == bytes.size();
}

} // namespace

bool XmlDocument::Create() {
    if (FAILED(CoCreateInstance(kDomDocumentClass, nullptr, CLSCTX_INPROC_SERVER, kDomDocument2Id,
                                m_document.PutVoid()))) {
        return false;
    }
    return SUCCEEDED(m_document->put_async(VARIANT_FALSE)) &&
           SUCCEEDED(m_document->put_validateOnParse(VARIANT_FALSE)) &&
           SUCCEEDED(m_document->put_resolveExternals(VARIANT_FALSE));
}

LoadStatus XmlDocument::LoadBytes(const std::string& bytes) {
    if (!IsHarmless(bytes)) {
        return LoadStatus::Refused;
    }
    const win::ComPtr<IStream> stream = StreamOf(bytes);
    const win::Variant source(static_cast<IUnknown*>(stream.Get()));
    VARIANT_BOOL parsed = VARIANT_FALSE;
    if (!stream || m_document->load(source.Get(), &parsed) != S_OK || parsed != VARIANT_TRUE || !Index()) {
        return LoadStatus::NoDocument;
    }
    return HasDocumentType() ? LoadStatus::Refused : LoadStatus::Loaded;
}

bool XmlDocument::LoadText(const std::wstring& text) {
    VARIANT_BOOL parsed = VARIANT_FALSE;
    return m_document->loadXML(win::Bstr(text).Get(), &parsed) == S_OK && parsed == VARIANT_TRUE && Index();
}

bool XmlDocument::LoadFresh() {
    win::ComPtr<IXMLDOMProcessingInstruction> declaration;
    if (!LoadText(std::wstring(kFreshDocument)) ||
        FAILED(m_document->createProcessingInstruction(win::Bstr(kDeclarationTarget).Get(),
                                                       win::Bstr(kDeclarationData).Get(), declaration.Put()))) {
        return false;
    }
    const win::Variant before(static_cast<IUnknown*>(Root().Get()));
    return SUCCEEDED(m_document->insertBefore(declaration.Get(), before.Get(), nullptr));
}

void XmlDocument::KeepSpace() {
    m_document->put_preserveWhiteSpace(VARIANT_TRUE);
}

bool XmlDocument::HasPlainRoot() const {
    win::Bstr name;
    const auto root = Root();
    return root && SUCCEEDED(root->get_namespaceURI(name.Put())) && name.View().empty();
}

win::ComPtr<IXMLDOMElement> XmlDocument::Find(const std::wstring& path) const {
    return m_index->Find(ElementNames(path));
}

win::ComPtr<IXMLDOMElement> XmlDocument::FindOrCreate(const std::wstring& path) {
    if (auto existing = Find(path)) {
        return IsXmlValue(existing.Get()) ? nullptr : existing;
    }
    const auto created = NewElement(path.substr(path.rfind(L'/') + 1));
    return created && Append(path, created.Get()) ? created : nullptr;
}

bool XmlDocument::Append(const std::wstring& path, IXMLDOMElement* element) {
    const auto names = ElementNames(path);
    size_t found = 0;
    const auto deepest = m_index->FindDeepest(names, found);
    if (found == names.size() || IsXmlValue(deepest.Get())) {
        return false;
    }
    // The chain is complete before it joins the document.
    std::vector<win::ComPtr<IXMLDOMElement>> chain;
    for (size_t i = found; i + 1 < names.size(); ++i) {
        chain.push_back(NewElement(names[i]));
    }
    chain.emplace_back(element);
    for (size_t i = 1; i < chain.size(); ++i) {
        if (!chain[i - 1] || FAILED(chain[i - 1]->appendChild(chain[i].Get(), nullptr))) {
            return false;
        }
    }
    for (size_t i = 0; i < chain.size(); ++i) {
        m_index->Added(std::span(names).first(found + i + 1), chain[i]);
    }
    if (SUCCEEDED(deepest->appendChild(chain.front().Get(), nullptr))) {
        return true;
    }
    m_index->Removed(std::span(names).first(found + 1));
    return false;
}

bool XmlDocument::Replace(const std::wstring& path, IXMLDOMElement* element) {
    const auto existing = Find(path);
    win::ComPtr<IXMLDOMNode> parent;
    if (!existing || existing->get_parentNode(parent.Put()) != S_OK ||
        FAILED(parent->replaceChild(element, existing.Get(), nullptr))) {
        return false;
    }
    m_index->Replaced(ElementNames(path), element);
    return true;
}

bool XmlDocument::Remove(const std::wstring& path) {
    const auto existing = path.empty() ? nullptr : Find(path);
    win::ComPtr<IXMLDOMNode> parent;
    if (!existing || existing->get_parentNode(parent.Put()) != S_OK ||
        FAILED(parent->removeChild(existing.Get(), nullptr))) {
        return false;
    }
    m_index->Removed(ElementNames(path));
    return true;
}

win::ComPtr<IXMLDOMElement> XmlDocument::NewElement(const std::wstring& name) {
    win::ComPtr<IXMLDOMElement> element;
    return SUCCEEDED(m_document->createElement(win::Bstr(name).Get(), element.Put())) ? element : nullptr;
}

std::wstring XmlDocument::Text() const {
    win::Bstr text;
    return SUCCEEDED(m_document->get_xml(text.Put())) ? std::wstring(text.View()) : std::wstring();
}

bool XmlDocument::SaveBytes(std::string& bytes) const {
    const win::ComPtr<IStream> stream = StreamOf({});
    if (!stream) {
        return false;
    }
    const win::Variant target(static_cast<IUnknown*>(stream.Get()));
    return m_document->save(target.Get()) == S_OK && ReadAll(stream.Get(), bytes);
}

bool XmlDocument::HasDocumentType() const {
    win::ComPtr<IXMLDOMDocumentType> type;
    return m_document->get_doctype(type.Put()) == S_OK;
}

bool XmlDocument::Index() {
    auto root = Root();
    m_index = root ? std::make_unique<ElementIndex>(std::move(root)) : nullptr;
    return m_index != nullptr;
}

win::ComPtr<IXMLDOMElement> XmlDocument::Root() const {
    win::ComPtr<IXMLDOMElement> root;
    return m_document->get_documentElement(root.Put()) == S_OK ? root : nullptr;
}

bool HasChildElement(IXMLDOMNode* element) {
    bool has = false;
    ForEachChild(element, [&has](IXMLDOMNode* node) {
        has = IsElement(node);
        return !has;
    });
    return has;
}

bool CopyPlainAttributes(IXMLDOMElement* from, IXMLDOMElement* to) {
    win::ComPtr<IXMLDOMNamedNodeMap> attributes;
    win::ComPtr<IXMLDOMNode> attribute;
    if (from->get_attributes(attributes.Put()) != S_OK) {
        return false;
    }
    while (attributes->nextNode(attribute.Put()) == S_OK) {
        win::Bstr name;
        win::Variant value;
        if (FAILED(attribute->get_nodeName(name.Put())) || FAILED(attribute->get_nodeValue(value.Put()))) {
            return false;
        }
        const bool plain = name.View().find(L':') == std::wstring_view::npos && name.View() != L"xmlns";
        if (plain && FAILED(to->setAttribute(name.Get(), value.Get()))) {
            return false;
        }
    }
    return true;
}
