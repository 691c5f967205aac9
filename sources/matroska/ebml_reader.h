// EbmlReader: finds EBML elements in a source and reads their values (RFC 8794). The identifiers and the nesting come
// from libmatroska; the reading does not, since the library allocates what a damaged size asks for.
//
// Units: bytes from the start of the source. Owner: holds a view of the source. Threads: one at a time.
// Errors: what does not lie inside its parent as a whole is marked; values that cannot be read are 0 or empty.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <ebml/EbmlElement.h>

#include "sources/base/byte_source.h"

namespace matroska {

struct Element {
    UINT32 id = 0;
    UINT64 start = 0;
    UINT64 data = 0;          // where the content begins
    UINT64 end = 0;           // behind the content, never behind the parent's end
    bool unknownSize = false; // the end is the parent's
    bool whole = true;        // the content does not reach behind the parent

    [[nodiscard]] UINT64 Size() const { return end - data; }
};

class EbmlReader {
  public:
    explicit EbmlReader(const source::ByteSource& source) : m_source(source) {}

    // The element that begins there, if it begins before the limit.
    [[nodiscard]] std::optional<Element> ElementAt(UINT64 position, UINT64 limit) const;

    // The fallback stands for an element without content.
    [[nodiscard]] UINT64 ReadUnsigned(const Element& element, UINT64 fallback = 0) const;
    [[nodiscard]] double ReadFloat(const Element& element, double fallback = 0) const;
    // Without what follows a zero.
    [[nodiscard]] std::string ReadString(const Element& element) const;
    // Empty for more bytes than that.
    [[nodiscard]] std::vector<BYTE> ReadBytes(const Element& element, UINT64 most) const;

    [[nodiscard]] const source::ByteSource& Source() const { return m_source; }

    // Calls visit(child) for the children that are whole; false when something at the end was not.
    template <typename Visit>
    bool ForEachChild(const Element& parent, Visit visit) const {
        UINT64 position = parent.data;
        while (position < parent.end) {
            const std::optional<Element> child = ElementAt(position, parent.end);
            if (!child || !child->whole) {
                return false;
            }
            visit(*child);
            position = child->end;
        }
        return parent.whole;
    }

  private:
    const source::ByteSource& m_source;
};

// The identifier of one of libmatroska's classes, with its length marker.
template <typename Class>
[[nodiscard]] UINT32 IdOf() {
    return static_cast<UINT32>(EBML_ID_VALUE(EBML_ID(Class)));
}

// Whether the class or the elements that may stand everywhere (Void, CRC-32) have that identifier.
[[nodiscard]] bool MayContain(const libebml::EbmlSemanticContext& parent, UINT32 id);

template <typename Class>
[[nodiscard]] bool MayContain(UINT32 id) {
    return MayContain(EBML_CLASS_CONTEXT(Class), id);
}

} // namespace matroska
