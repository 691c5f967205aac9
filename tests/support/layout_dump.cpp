#include "tests/support/layout_dump.h"

#include <algorithm>

#include "tests/support/checksum.h"
#include "tests/support/text_format.h"

namespace test_support {

namespace {

using namespace ebml_id;

constexpr size_t kMaxBytesInFull = 48; // longer binary values are shown by their checksum
constexpr uint64_t kNsPerMs = 1000000;

class Dumper {
  public:
    Dumper(const MatroskaLayout& layout, const DumpOptions& options) : m_layout(layout), m_options(options) {}
    std::string Dump();

  private:
    void DumpElements(const std::vector<EbmlElement>& elements, int depth);
    void DumpElement(const EbmlElement& element, const EbmlElement* previous, int depth);
    [[nodiscard]] std::string ValueText(const EbmlElement& element, EbmlType type) const;
    [[nodiscard]] std::string BinaryText(const EbmlElement& element) const;
    [[nodiscard]] std::string BlockText(const EbmlElement& element) const;
    [[nodiscard]] std::string TimeText(int64_t ticks) const;
    [[nodiscard]] std::string TargetText(const EbmlElement& element) const;
    [[nodiscard]] bool HasMaskedLength(const EbmlElement& element) const;

    const MatroskaLayout& m_layout;
    const DumpOptions& m_options;
    uint64_t m_clusterTime = 0; // ticks, of the cluster that is being shown
    std::string m_text;
};

bool IsPosition(uint32_t id) {
    return id == kSeekPosition || id == kCueClusterPosition;
}

bool Dumper::HasMaskedLength(const EbmlElement& element) const {
    return IsPosition(element.id) || m_options.masked.contains(element.id) ||
           std::any_of(element.children.begin(), element.children.end(),
                       [this](const EbmlElement& child) { return HasMaskedLength(child); });
}

std::string Dumper::TimeText(int64_t ticks) const {
    if (m_layout.timestampScaleNs == kNsPerMs) {
        return std::to_string(ticks);
    }
    return FormatDouble(static_cast<double>(ticks) * static_cast<double>(m_layout.timestampScaleNs) / kNsPerMs);
}

// What begins at that position of the Segment; clusters with their number, counted from 1.
std::string Dumper::TargetText(const EbmlElement& element) const {
    const std::optional<uint64_t> position = UnsignedOf(m_layout.file, element);
    const EbmlElement* const segment = m_layout.Segment();
    int cluster = 0;
    if (segment != nullptr && position) {
        for (const EbmlElement& child : segment->children) {
            cluster += child.id == kCluster ? 1 : 0;
            if (child.offset - segment->DataOffset() == *position) {
                return child.id == kCluster ? "Cluster " + std::to_string(cluster) : child.Name();
            }
        }
    }
    return "nothing";
}

std::string Dumper::BlockText(const EbmlElement& element) const {
    std::string lacingProblem;
    const std::optional<LayoutBlock> block = ReadBlock(DataOf(m_layout.file, element), lacingProblem);
    if (!block) {
        return " cut";
    }
    std::string text = " track " + std::to_string(block->track) + " time " +
                       TimeText(static_cast<int64_t>(m_clusterTime) + block->relativeTime) + " flags " +
                       FormatHex({&block->flags, 1});
    for (const ByteView frame : block->frames) {
        text += " size " + std::to_string(frame.size()) + " crc " + FormatHex32(Crc32(frame));
    }
    return text;
}

std::string Dumper::BinaryText(const EbmlElement& element) const {
    if (element.id == kSimpleBlock || element.id == kBlock) {
        return BlockText(element);
    }
    const ByteView data = DataOf(m_layout.file, element);
    if (element.id == kSeekId) {
        const std::optional<EbmlNumber> id = ReadEbmlId(data);
        return id ? " " + ElementName(static_cast<uint32_t>(id->value)) : " " + FormatHex(data);
    }
    std::string size = " size " + std::to_string(data.size());
    if (element.id == kVoid || data.empty()) {
        return size;
    }
    return size + (data.size() <= kMaxBytesInFull ? " " + FormatHex(data) : " crc " + FormatHex32(Crc32(data)));
}

std::string Dumper::ValueText(const EbmlElement& element, EbmlType type) const {
    const std::string unreadable = " unreadable";
    switch (type) {
    case EbmlType::Unsigned: {
        const std::optional<uint64_t> value = UnsignedOf(m_layout.file, element);
        return value ? " " + std::to_string(*value) : unreadable;
    }
    case EbmlType::Signed:
    case EbmlType::Date: {
        const std::optional<int64_t> value = SignedOf(m_layout.file, element);
        return value ? " " + std::to_string(*value) : unreadable;
    }
    case EbmlType::Float: {
        const std::optional<double> value = FloatOf(m_layout.file, element);
        return value ? " " + FormatDouble(*value) : unreadable;
    }
    case EbmlType::String:
    case EbmlType::Utf8:
        return " " + Quote(TextOf(m_layout.file, element));
    default:
        return BinaryText(element);
    }
}

void Dumper::DumpElement(const EbmlElement& element, const EbmlElement* previous, int depth) {
    const EbmlElementInfo* const info = FindElementInfo(element.id);
    const EbmlType type = info == nullptr ? EbmlType::Binary : info->type;
    m_text += std::string(static_cast<size_t>(2 * depth), ' ') + element.Name();
    if (m_options.offsets) {
        m_text += " @" + std::to_string(element.offset);
    }
    if (m_options.masked.contains(element.id)) {
        m_text += " *";
    } else if (IsPosition(element.id)) {
        m_text += " -> " + TargetText(element);
    } else if (element.id == kVoid && previous != nullptr && HasMaskedLength(*previous)) {
        m_text += " to " + std::to_string(element.End() - previous->offset) + " bytes with " + previous->Name();
    } else if (type == EbmlType::Master) {
        m_text += HasMaskedLength(element) ? " size *" : " size " + std::to_string(element.dataSize);
        m_text += element.unknownSize ? " unknown" : "";
    } else {
        m_text += ValueText(element, type);
    }
    m_text += '\n';
    if (element.id == kTimestamp) {
        m_clusterTime = std::min(UnsignedOf(m_layout.file, element).value_or(0), uint64_t{1} << 62);
    }
    DumpElements(element.children, depth + 1);
}

void Dumper::DumpElements(const std::vector<EbmlElement>& elements, int depth) {
    const EbmlElement* previous = nullptr;
    for (const EbmlElement& element : elements) {
        DumpElement(element, previous, depth);
        previous = &element;
    }
}

std::string Dumper::Dump() {
    DumpElements(m_layout.tree.elements, 0);
    for (const std::vector<std::string>* const list : {&m_layout.problems, &m_layout.cuts}) {
        for (const std::string& problem : *list) {
            m_text += "! " + problem + "\n";
        }
    }
    return m_text;
}

} // namespace

std::string DumpLayout(const MatroskaLayout& layout, const DumpOptions& options) {
    return Dumper(layout, options).Dump();
}

std::string DumpLayout(ByteView file, const DumpOptions& options) {
    return DumpLayout(ReadLayout(file), options);
}

} // namespace test_support
