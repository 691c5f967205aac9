// ElementKinds: what is known of an element by its identifier and by where it stands: its name, what it holds, and how
// its value is to be read. From libmatroska's tables.
//
// Threads: any. Errors: none; what is not known has no kind.
#pragma once

#include <optional>

#include <ebml/EbmlElement.h>

#include "win/platform.h"

namespace report {

enum class ValueKind { Master, Unsigned, Signed, Float, Text, Date, Binary };

struct ElementKind {
    const char* name = nullptr;
    ValueKind value = ValueKind::Binary;
    const libebml::EbmlSemanticContext* context = nullptr; // of its children
};

// Of a child of that parent; elements that may stand everywhere are among them.
[[nodiscard]] std::optional<ElementKind> KindOf(const libebml::EbmlSemanticContext& parent, UINT32 id);
// Of what stands in no parent: the head and the Segment.
[[nodiscard]] std::optional<ElementKind> TopKindOf(UINT32 id);

} // namespace report
