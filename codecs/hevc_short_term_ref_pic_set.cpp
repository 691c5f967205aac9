#include "codecs/hevc_short_term_ref_pic_set.h"

#include <algorithm>
#include <vector>

namespace mkv {

namespace {

constexpr UINT32 kMaxPicturesOneWay = 16;
constexpr size_t kMaxPicturesBothWays = 32;
constexpr UINT32 kMaxAbsDeltaMinus1 = 32767;

// Picture order count differences of one set. A set is a set: no difference comes twice, and 0 is the picture itself.
using Deltas = std::vector<INT32>;

// The differences in the order in which a predicted set's flags go through them: backwards from near to far, then
// forwards from near to far.
void SortAsSignalled(Deltas& deltas) {
    std::sort(deltas.begin(), deltas.end(), [](INT32 a, INT32 b) {
        if ((a < 0) != (b < 0)) {
            return a < 0;
        }
        return a < 0 ? a > b : a < b;
    });
}

Deltas ReadPredictedSet(BitstreamReader& reader, const Deltas& reference) {
    const bool isNegative = reader.ReadFlag();
    const INT32 distance = static_cast<INT32>(reader.ReadUE(kMaxAbsDeltaMinus1)) + 1;
    const INT32 shift = isNegative ? -distance : distance;
    Deltas deltas;
    // One flag pair for each entry of the reference set, and one for the reference picture itself.
    for (size_t i = 0; i <= reference.size(); ++i) {
        const bool isUsedByCurrent = reader.ReadFlag();
        const bool isKept = isUsedByCurrent || reader.ReadFlag();
        const INT32 delta = (i < reference.size() ? reference[i] : 0) + shift;
        if (isKept && delta != 0) {
            deltas.push_back(delta);
        }
    }
    SortAsSignalled(deltas);
    return deltas;
}

void ReadOneWay(BitstreamReader& reader, UINT32 count, INT32 sign, Deltas& deltas) {
    INT32 delta = 0;
    for (UINT32 i = 0; i < count; ++i) {
        delta += sign * (static_cast<INT32>(reader.ReadUE(kMaxAbsDeltaMinus1)) + 1);
        reader.SkipBits(1); // used by the current picture
        deltas.push_back(delta);
    }
}

Deltas ReadCodedSet(BitstreamReader& reader) {
    const UINT32 negative = reader.ReadUE(kMaxPicturesOneWay);
    const UINT32 positive = reader.ReadUE(kMaxPicturesOneWay);
    Deltas deltas;
    ReadOneWay(reader, negative, -1, deltas);
    ReadOneWay(reader, positive, 1, deltas);
    return deltas;
}

} // namespace

void SkipHevcShortTermRefPicSets(BitstreamReader& reader, UINT32 count) {
    Deltas previous;
    for (UINT32 index = 0; index < count && reader.IsValid(); ++index) {
        const bool isPredicted = index != 0 && reader.ReadFlag();
        previous = isPredicted ? ReadPredictedSet(reader, previous) : ReadCodedSet(reader);
        if (previous.size() > kMaxPicturesBothWays) {
            reader.Invalidate();
        }
    }
}

} // namespace mkv
