#include "codecs/prores_frame.h"

#include <algorithm>
#include <iterator>

namespace codecs {

namespace {

constexpr std::uint8_t kMark[] = {'i', 'c', 'p', 'f'};
constexpr size_t kMarkPlace = 4; // behind the length
static_assert(kMarkPlace + sizeof(kMark) == kProResHeadBytes);

} // namespace

bool HasProResHead(ByteView frame) {
    return frame.size() >= kProResHeadBytes &&
           std::equal(std::begin(kMark), std::end(kMark), frame.begin() + kMarkPlace);
}

void AddProResHead(std::vector<std::uint8_t>& frame) {
    if (frame.empty() || HasProResHead(frame)) {
        return;
    }
    const auto length = static_cast<std::uint32_t>(frame.size() + kProResHeadBytes);
    std::uint8_t head[kProResHeadBytes];
    for (size_t i = 0; i < kMarkPlace; ++i) {
        head[i] = static_cast<std::uint8_t>(length >> (kMarkPlace - 1 - i) * 8);
    }
    std::copy(std::begin(kMark), std::end(kMark), std::begin(head) + kMarkPlace);
    frame.insert(frame.begin(), std::begin(head), std::end(head));
}

} // namespace codecs
