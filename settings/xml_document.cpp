#include "settings/xml_document.h"

#include <algorithm>

#include "settings/variant.h"
#include "settings/xml_names.h"
#include "settings/xml_value.h"

namespace {

constexpr std::wstring_view kFreshDocument = L"<XMLSettings version=\"1.0\"></XMLSettings>";
constexpr std::wstring_view kDeclarationTarget = L"xml";
constexpr std::wstring_view kDeclarationData = L" version=\"1.0\" encoding=\"UTF-8\"";
// The older language has words that no element may be named, "and" for one.
constexpr std::wstring_view kQueryLanguageProperty = L"SelectionLanguage";
constexpr std::wstring_view kQueryLanguage = L"XPath";
constexpr std::string_view kDocumentType = "<!DOCTYPE";

// In any encoding that keeps ASCII's bytes, with zeros between them or not.
bool MentionsDocumentType(const std::string& bytes) {
    std::string plain = bytes;
    std::erase(plain, '\0');
    return plain.find(kDocumentType) != std::string::npos;
}

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
           SUCCEEDED(m_document->put_resolveExternals(VARIANT_FALSE)) &&
           SUCCEEDED(m_document->setProperty(win::Bstr(kQueryLanguageProperty).Get(), Variant(kQueryLanguage).Get()));
}

bool XmlDocument::LoadBytes(const std::string& bytes) {
    const win::ComPtr<IStream> stream = MentionsDocumentType(bytes) ? nullptr : StreamOf(bytes);
    if (!stream) {
        return false;
    }
    const Variant source(static_cast<IUnknown*>(stream.Get()));
    VARIANT_BOOL parsed = VARIANT_FALSE;
    return m_document->load(source.Get(), &parsed) == S_OK && parsed == VARIANT_TRUE && Root();
}

bool XmlDocument::LoadText(const std::wstring& text) {
    VARIANT_BOOL parsed = VARIANT_FALSE;
    return m_document->loadXML(win::Bstr(text).Get(), &parsed) == S_OK && parsed == VARIANT_TRUE && Root();
}

bool XmlDocument::LoadFresh() {
    win::ComPtr<IXMLDOMProcessingInstruction> declaration;
    if (!LoadText(std::wstring(kFreshDocument)) ||
        FAILED(m_document->createProcessingInstruction(win::Bstr(kDeclarationTarget).Get(),
                                                       win::Bstr(kDeclarationData).Get(), declaration.Put()))) {
        return false;
    }
    const Variant before(static_cast<IUnknown*>(Root().Get()));
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
    return path.empty() ? Root() : ChildElement(Root().Get(), path.substr(1));
}

win::ComPtr<IXMLDOMElement> XmlDocument::FindOrCreate(const std::wstring& path) {
    const auto names = ElementNames(path);
    win::ComPtr<IXMLDOMElement> deepest = Root();
    auto name = names.begin();
    for (; name != names.end(); ++name) {
        auto child = ChildElement(deepest.Get(), *name);
        if (!child) {
            break;
        }
        deepest = child;
    }
    if (IsXmlValue(deepest.Get())) {
        return {};
    }
    return name == names.end() ? deepest : AppendChain(deepest.Get(), {name, names.end()});
}

// The chain is complete before it joins the document.
win::ComPtr<IXMLDOMElement> XmlDocument::AppendChain(IXMLDOMNode* parent, std::span<const std::wstring> names) {
    const win::ComPtr<IXMLDOMElement> top = NewElement(names.front());
    win::ComPtr<IXMLDOMElement> last = top;
    for (const std::wstring& name : names.subspan(1)) {
        const auto child = NewElement(name);
        if (!last || !child || FAILED(last->appendChild(child.Get(), nullptr))) {
            return {};
        }
        last = child;
    }
    return top && SUCCEEDED(parent->appendChild(top.Get(), nullptr)) ? last : nullptr;
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
    const Variant target(static_cast<IUnknown*>(stream.Get()));
    return m_document->save(target.Get()) == S_OK && ReadAll(stream.Get(), bytes);
}

win::ComPtr<IXMLDOMElement> XmlDocument::Root() const {
    win::ComPtr<IXMLDOMElement> root;
    return m_document->get_documentElement(root.Put()) == S_OK ? root : nullptr;
}

win::ComPtr<IXMLDOMElement> ChildElement(IXMLDOMNode* parent, const std::wstring& path) {
    win::ComPtr<IXMLDOMNode> node;
    if (parent == nullptr || parent->selectSingleNode(win::Bstr(path).Get(), node.Put()) != S_OK) {
        return {};
    }
    return node.Query<IXMLDOMElement>(IID_IXMLDOMElement);
}

bool HasChildElement(IXMLDOMNode* element) {
    win::ComPtr<IXMLDOMNode> node;
    return element->selectSingleNode(win::Bstr(L"*").Get(), node.Put()) == S_OK;
}

bool CopyPlainAttributes(IXMLDOMElement* from, IXMLDOMElement* to) {
    win::ComPtr<IXMLDOMNamedNodeMap> attributes;
    win::ComPtr<IXMLDOMNode> attribute;
    if (from->get_attributes(attributes.Put()) != S_OK) {
        return false;
    }
    while (attributes->nextNode(attribute.Put()) == S_OK) {
        win::Bstr name;
        Variant value;
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
