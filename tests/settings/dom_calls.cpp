#include "tests/settings/dom_calls.h"

#include <gtest/gtest.h>

#include "settings/msxml.h"
#include "win/bstr.h"

namespace {

// The places in IXMLDOMNode's table, behind those of IUnknown and IDispatch.
constexpr size_t kGetChildNodes = 12;
constexpr size_t kGetNextSibling = 16;
constexpr size_t kSelectNodes = 36;
constexpr size_t kSelectSingleNode = 37;

using GetList = HRESULT(WINAPI*)(IXMLDOMNode*, IXMLDOMNodeList**);
using GetNode = HRESULT(WINAPI*)(IXMLDOMNode*, IXMLDOMNode**);
using SelectList = HRESULT(WINAPI*)(IXMLDOMNode*, BSTR, IXMLDOMNodeList**);
using SelectNode = HRESULT(WINAPI*)(IXMLDOMNode*, BSTR, IXMLDOMNode**);

size_t g_searches = 0;
size_t g_steps = 0;
GetList g_getChildNodes = nullptr;
GetNode g_getNextSibling = nullptr;
SelectList g_selectNodes = nullptr;
SelectNode g_selectSingleNode = nullptr;

HRESULT WINAPI CountGetChildNodes(IXMLDOMNode* self, IXMLDOMNodeList** list) {
    ++g_searches;
    return g_getChildNodes(self, list);
}

HRESULT WINAPI CountGetNextSibling(IXMLDOMNode* self, IXMLDOMNode** node) {
    ++g_steps;
    return g_getNextSibling(self, node);
}

HRESULT WINAPI CountSelectNodes(IXMLDOMNode* self, BSTR query, IXMLDOMNodeList** list) {
    ++g_searches;
    return g_selectNodes(self, query, list);
}

HRESULT WINAPI CountSelectSingleNode(IXMLDOMNode* self, BSTR query, IXMLDOMNode** node) {
    ++g_searches;
    return g_selectSingleNode(self, query, node);
}

template <typename Function>
Function Exchange(IXMLDOMElement* element, size_t place, Function function) {
    void** const table = *reinterpret_cast<void***>(element);
    DWORD protection = 0;
    EXPECT_TRUE(VirtualProtect(&table[place], sizeof(void*), PAGE_READWRITE, &protection));
    const auto before = reinterpret_cast<Function>(table[place]);
    table[place] = reinterpret_cast<void*>(function);
    EXPECT_TRUE(VirtualProtect(&table[place], sizeof(void*), protection, &protection));
    return before;
}

} // namespace

DomCalls::DomCalls() {
    win::ComPtr<IXMLDOMDocument2> document;
    EXPECT_EQ(S_OK,
              CoCreateInstance(kDomDocumentClass, nullptr, CLSCTX_INPROC_SERVER, kDomDocument2Id, document.PutVoid()));
    EXPECT_EQ(S_OK, document->createElement(win::Bstr(L"any").Get(), m_element.Put()));
    g_searches = 0;
    g_steps = 0;
    g_getChildNodes = Exchange(m_element.Get(), kGetChildNodes, &CountGetChildNodes);
    g_getNextSibling = Exchange(m_element.Get(), kGetNextSibling, &CountGetNextSibling);
    g_selectNodes = Exchange(m_element.Get(), kSelectNodes, &CountSelectNodes);
    g_selectSingleNode = Exchange(m_element.Get(), kSelectSingleNode, &CountSelectSingleNode);
}

DomCalls::~DomCalls() {
    Exchange(m_element.Get(), kGetChildNodes, g_getChildNodes);
    Exchange(m_element.Get(), kGetNextSibling, g_getNextSibling);
    Exchange(m_element.Get(), kSelectNodes, g_selectNodes);
    Exchange(m_element.Get(), kSelectSingleNode, g_selectSingleNode);
}

size_t DomCalls::Searches() {
    return g_searches;
}

size_t DomCalls::Steps() {
    return g_steps;
}
