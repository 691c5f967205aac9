// DomCalls: counts what this process asks elements of MSXML's documents while it lives.
//
// It puts functions of its own into the table that all elements share, and takes them out again.
// Owner: the patched table. Threads: one; one at a time. Errors: a table that cannot be patched is a test failure.
#pragma once

#include <cstddef>

#include "settings/msxml.h"
#include "win/com_ptr.h"

class DomCalls {
  public:
    DomCalls();
    ~DomCalls();
    DomCalls(const DomCalls&) = delete;
    DomCalls& operator=(const DomCalls&) = delete;

    // Queries, and lists of children: each looks at all children of an element, or may.
    [[nodiscard]] static size_t Searches();
    // From one node to its next sibling.
    [[nodiscard]] static size_t Steps();

  private:
    win::ComPtr<IXMLDOMElement> m_element; // keeps the library loaded
};
