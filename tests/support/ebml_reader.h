// The tests' own EBML reader: parses a whole file in memory into a tree. It shares no code with any library that
// writes such files, and believes no length that it has not checked against the bytes that are there.
//
// Units: bytes, offsets from the file's start. Owner: the tree holds no bytes; values are read from the file's.
// Threads: as values. Errors: findings in EbmlTree::problems; parsing goes on where that is possible.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tests/support/ebml_schema.h"

namespace test_support {

using ByteView = std::span<const uint8_t>;

struct EbmlElement {
    uint32_t id = 0;
    uint64_t offset = 0;     // of the identifier's first byte
    uint32_t idLength = 0;   // bytes of the identifier
    uint32_t sizeLength = 0; // bytes of the size field
    uint64_t dataSize = 0;   // as written; with an unknown size, as far as the content reaches
    bool unknownSize = false;
    bool cut = false;                  // there is less of it than its size says
    std::vector<EbmlElement> children; // of masters

    [[nodiscard]] uint64_t DataOffset() const { return offset + idLength + sizeLength; }
    [[nodiscard]] uint64_t End() const { return DataOffset() + dataSize; }
    [[nodiscard]] std::string Name() const { return ElementName(id); }
    // The first child with that identifier, or null.
    [[nodiscard]] const EbmlElement* Child(uint32_t childId) const;
    [[nodiscard]] std::vector<const EbmlElement*> Children(uint32_t childId) const;
};

struct EbmlTree {
    std::vector<EbmlElement> elements; // at the top
    std::vector<std::string> problems; // each begins with the offset
    std::vector<std::string> cuts;     // the same, for elements that end only because the file does

    [[nodiscard]] const EbmlElement* Child(uint32_t id) const;
};

[[nodiscard]] EbmlTree ReadEbml(ByteView file);

// A variable-length number: identifiers keep their length marker, sizes lose it.
struct EbmlNumber {
    uint64_t value = 0;
    uint32_t length = 0;  // bytes
    bool allOnes = false; // of a size: unknown
};
[[nodiscard]] std::optional<EbmlNumber> ReadEbmlId(ByteView bytes);
[[nodiscard]] std::optional<EbmlNumber> ReadEbmlSize(ByteView bytes);

// ---- Values; none when the element's length does not fit its type --------------------------------------------------

[[nodiscard]] ByteView DataOf(ByteView file, const EbmlElement& element);
[[nodiscard]] std::optional<uint64_t> UnsignedOf(ByteView file, const EbmlElement& element);
[[nodiscard]] std::optional<int64_t> SignedOf(ByteView file, const EbmlElement& element);
[[nodiscard]] std::optional<double> FloatOf(ByteView file, const EbmlElement& element);
// Without the zeros that may pad it.
[[nodiscard]] std::string TextOf(ByteView file, const EbmlElement& element);

} // namespace test_support
