#include "report/element_kinds.h"

#include <memory>

#include <ebml/EbmlCrc32.h>
#include <ebml/EbmlDate.h>
#include <ebml/EbmlFloat.h>
#include <ebml/EbmlHead.h>
#include <ebml/EbmlMaster.h>
#include <ebml/EbmlSInteger.h>
#include <ebml/EbmlString.h>
#include <ebml/EbmlUInteger.h>
#include <ebml/EbmlUnicodeString.h>
#include <ebml/EbmlVoid.h>
#include <matroska/KaxSegment.h>

#include "sources/matroska/ebml_reader.h"

namespace report {

namespace {

template <typename Kind>
bool Is(const libebml::EbmlElement& element) {
    return dynamic_cast<const Kind*>(&element) != nullptr;
}

ValueKind ValueKindOf(const libebml::EbmlElement& element) {
    if (Is<libebml::EbmlMaster>(element)) {
        return ValueKind::Master;
    }
    if (Is<libebml::EbmlUInteger>(element)) {
        return ValueKind::Unsigned;
    }
    if (Is<libebml::EbmlSInteger>(element)) {
        return ValueKind::Signed;
    }
    if (Is<libebml::EbmlFloat>(element)) {
        return ValueKind::Float;
    }
    if (Is<libebml::EbmlDate>(element)) {
        return ValueKind::Date;
    }
    return Is<libebml::EbmlString>(element) || Is<libebml::EbmlUnicodeString>(element) ? ValueKind::Text
                                                                                       : ValueKind::Binary;
}

ElementKind KindBy(const libebml::EbmlCallbacks& callbacks) {
    const std::unique_ptr<libebml::EbmlElement> element(&EBML_INFO_CREATE(callbacks));
    return {EBML_INFO_NAME(callbacks), ValueKindOf(*element), &EBML_INFO_CONTEXT(callbacks)};
}

template <typename Class>
std::optional<ElementKind> KindIf(UINT32 id) {
    return id == matroska::IdOf<Class>() ? std::optional(KindBy(EBML_INFO(Class))) : std::nullopt;
}

} // namespace

std::optional<ElementKind> KindOf(const libebml::EbmlSemanticContext& parent, UINT32 id) {
    for (size_t i = 0; i < EBML_CTX_SIZE(parent); ++i) {
        if (EBML_ID_VALUE(EBML_CTX_IDX_ID(parent, i)) == id) {
            return KindBy(EBML_CTX_IDX_INFO(parent, i));
        }
    }
    const auto filler = KindIf<libebml::EbmlVoid>(id);
    return filler ? filler : KindIf<libebml::EbmlCrc32>(id);
}

std::optional<ElementKind> TopKindOf(UINT32 id) {
    const auto head = KindIf<libebml::EbmlHead>(id);
    const auto segment = head ? head : KindIf<libmatroska::KaxSegment>(id);
    return segment ? segment : KindIf<libebml::EbmlVoid>(id);
}

} // namespace report
