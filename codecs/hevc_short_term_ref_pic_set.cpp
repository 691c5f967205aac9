#include "codecs/hevc_short_term_ref_pic_set.h"

#include <algorithm>
#include <vector>

namespace codecs {

namespace {

constexpr uint32_t kMaxPicturesOneWay = 16;
constexpr size_t kMaxPicturesBothWays = 32;
constexpr uint32_t kMaxAbsDeltaMinus1 = 32767;

// Picture order count differences of one set. A set is a set: no difference comes twice, and 0 is the picture itself.
using Deltas = std::vector<int32_t>;

// The differences in the order in which a predicted set's flags go through them: backwards from near to far, then
// forwards from near to far.
void SortAsSignalled(Deltas& deltas) {
    std::sort(deltas.begin(), deltas.end(), [](int32_t a, int32_t b) {
        if ((a < 0) != (b < 0)) {
            return a < 0;
        }
        return a < 0 ? a > b : a < b;
    });
}

Deltas ReadPredictedSet(BitstreamReader& reader, const Deltas& reference) {
    const bool isNegative = reader.ReadFlag();
    const int32_t distance = static_cast<int32_t>(reader.ReadUE(kMaxAbsDeltaMinus1)) + 1;
    const int32_t shift = isNegative ? -distance : distance;
    Deltas deltas;
    // One flag pair for each entry of the reference set, and one for the reference picture itself.
    for (size_t i = 0; i <= reference.size(); ++i) {
        const bool isUsedByCurrent = reader.ReadFlag();
        const bool isKept = isUsedByCurrent || reader.ReadFlag();
        const int32_t delta = (i < reference.size() ? reference[i] : 0) + shift;
        if (isKept && delta != 0) {
            deltas.push_back(delta);
        }
    }
    SortAsSignalled(deltas);
    return deltas;
}

void ReadOneWay(BitstreamReader& reader, uint32_t count, int32_t sign, Deltas& deltas) {
    int32_t delta = 0;
    for (uint32_t i = 0; i < count; ++i) {
        delta += sign * (static_cast<int32_t>(reader.ReadUE(kMaxAbsDeltaMinus1)) + 1);
        reader.SkipBits(1); // used by the current picture
        deltas.push_back(delta);
    }
}

Deltas ReadCodedSet(BitstreamReader& reader) {
    const uint32_t negative = reader.ReadUE(kMaxPicturesOneWay);
    const uint32_t positive = reader.ReadUE(kMaxPicturesOneWay);
    Deltas deltas;
    ReadOneWay(reader, negative, -1, deltas);
    ReadOneWay(reader, positive, 1, deltas);
    return deltas;
}

} // namespace

void SkipHevcShortTermRefPicSets(BitstreamReader& reader, uint32_t count) {
    Deltas previous;
    for (uint32_t index = 0; index < count && reader.IsValid(); ++index) {
        const bool isPredicted = index != 0 && reader.ReadFlag();
        previous = isPredicted ? ReadPredictedSet(reader, previous) : ReadCodedSet(reader);
        if (previous.size() > kMaxPicturesBothWays) {
            reader.Invalidate();
        }
    }
}

} // namespace codecs
