#include "sources/annexb/index_builder.h"

#include <algorithm>
#include <numeric>

#include "codecs/annexb_converter.h"

namespace annexb {

namespace {

constexpr UINT64 kShortStartCodeBytes = 3; // what a unit has in front at least
constexpr size_t kMaxSequenceHeaderBytes = size_t{256} * 1024;

// Each picture's place in the order of presentation.
void NumberPictures(std::vector<CodedPicture>& pictures) {
    std::vector<size_t> order(pictures.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(), [&pictures](size_t a, size_t b) {
        return std::pair(pictures[a].sequence, pictures[a].order) < std::pair(pictures[b].sequence, pictures[b].order);
    });
    for (size_t place = 0; place < order.size(); ++place) {
        pictures[order[place]].shown = place;
    }
}

} // namespace

void IndexBuilder::AddPrefix(const UnitExtent& unit) {
    if (!m_prefixStart) {
        m_prefixStart = unit.start - kShortStartCodeBytes;
    }
}

void IndexBuilder::AddOfOtherLayer(const UnitExtent& unit) {
    if (!m_prefixStart) {
        Extend(unit);
    }
}

void IndexBuilder::BeginPicture(const UnitExtent& unit, UINT32 sequence, INT32 order, bool keyframe) {
    if (m_index.pictures.size() >= m_mostPictures) {
        m_isFull = true;
        m_index.isDamaged = true;
        return;
    }
    CodedPicture picture;
    picture.isOneUnit = !m_prefixStart;
    picture.start = std::exchange(m_prefixStart, std::nullopt).value_or(unit.start - kShortStartCodeBytes);
    picture.end = unit.end;
    picture.sequence = sequence;
    picture.order = order;
    picture.keyframe = keyframe;
    m_index.pictures.push_back(picture);
}

void IndexBuilder::Extend(const UnitExtent& unit) {
    m_prefixStart.reset();
    if (!m_index.pictures.empty() && !m_isFull) {
        m_index.pictures.back().end = unit.end;
        m_index.pictures.back().isOneUnit = false;
    }
}

void IndexBuilder::JoinField(const UnitExtent& unit, INT32 order) {
    Extend(unit);
    m_index.pictures.back().order = std::min(m_index.pictures.back().order, order);
}

void IndexBuilder::AddParameterSet(BYTE kind, UINT32 id, codecs::ByteView unit) {
    std::vector<BYTE>& sets = m_index.parameterSets;
    if (sets.size() + unit.size() <= kMaxSequenceHeaderBytes && m_knownSets.emplace(kind, id).second) {
        sets.insert(sets.end(), codecs::kStartCode.begin(), codecs::kStartCode.end());
        sets.insert(sets.end(), unit.begin(), unit.end());
    }
}

void IndexBuilder::SetShape(const codecs::PictureShape& shape, BYTE profile, BYTE level) {
    if (m_index.shape.width == 0) {
        m_index.shape = shape;
        m_index.profile = profile;
        m_index.level = level;
    }
}

PictureIndex IndexBuilder::Take() {
    NumberPictures(m_index.pictures);
    return std::move(m_index);
}

} // namespace annexb
