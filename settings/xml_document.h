// XmlDocument: the MSXML document that holds a settings file while it is open.
//
// Paths are below the root element, whatever its name: "/preferences/section". They are trusted to be chains of names.
// Owner: the document. Threads: those of the COM apartment that made it.
// Errors: false or null; std::bad_alloc.
#pragma once

#include <memory>
#include <string>

#include "settings/msxml.h"
#include "settings/xml_index.h"
#include "win/com_ptr.h"

// A longer file is no settings file, and none is written. Some parsers give up at ten million bytes.
inline constexpr size_t kMaxDocumentBytes = size_t{8} * 1024 * 1024;

enum class LoadStatus {
    Loaded,
    NoDocument, // it is not well-formed
    Refused,    // it may be a document, but one with a document type, or one that would cost a parser too much
};

class XmlDocument {
  public:
    // Every call below needs a document that was created.
    [[nodiscard]] bool Create();

    // Replaces what it holds. No entity is ever looked up or expanded.
    [[nodiscard]] LoadStatus LoadBytes(const std::string& bytes);
    [[nodiscard]] bool LoadText(const std::wstring& text);
    // The empty settings document.
    [[nodiscard]] bool LoadFresh();
    void KeepSpace();

    // False when its elements would not be found by the names they are given.
    [[nodiscard]] bool HasPlainRoot() const;
    [[nodiscard]] win::ComPtr<IXMLDOMElement> Find(const std::wstring& path) const;
    // Creates what is missing. Null, with nothing created, when the path runs through a value or ends in one.
    [[nodiscard]] win::ComPtr<IXMLDOMElement> FindOrCreate(const std::wstring& path);
    // Where there is none of that path; what is missing above it is created. False as above.
    [[nodiscard]] bool Append(const std::wstring& path, IXMLDOMElement* element);
    // Both have no child elements.
    [[nodiscard]] bool Replace(const std::wstring& path, IXMLDOMElement* element);
    // False when there is none, and for the root.
    [[nodiscard]] bool Remove(const std::wstring& path);
    [[nodiscard]] win::ComPtr<IXMLDOMElement> NewElement(const std::wstring& name);

    [[nodiscard]] std::wstring Text() const;
    // What the document's save writes.
    [[nodiscard]] bool SaveBytes(std::string& bytes) const;

  private:
    [[nodiscard]] win::ComPtr<IXMLDOMElement> Root() const;
    [[nodiscard]] bool HasDocumentType() const;
    // After each load.
    [[nodiscard]] bool Index();

    win::ComPtr<IXMLDOMDocument2> m_document;
    std::unique_ptr<ElementIndex> m_index; // of what was loaded
};

[[nodiscard]] bool HasChildElement(IXMLDOMNode* element);
// Those without a prefix, which mean nothing to the settings but may to others.
[[nodiscard]] bool CopyPlainAttributes(IXMLDOMElement* from, IXMLDOMElement* to);
