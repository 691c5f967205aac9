#include "codecs/zero_pair_search.h"

#include <cstring>

namespace codecs {

namespace {

using Word = uint64_t;

constexpr Word kEachByte = 0x0101010101010101;

Word WordAt(const uint8_t* bytes) {
    Word word = 0;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

// Other than zero where one of these bytes and of the one behind it are both zero; seldom elsewhere, as a borrow goes
// on into the bytes above.
Word ZerosAt(const uint8_t* bytes) {
    const Word either = WordAt(bytes) | WordAt(bytes + 1);
    return (either - kEachByte) & ~either & (kEachByte << 7);
}

} // namespace

size_t FindZeros(ByteView bytes, size_t from) {
    constexpr size_t kStep = 2 * sizeof(Word);
    const uint8_t* const begin = bytes.data();
    const size_t size = bytes.size();
    while (from < size) {
        while (size - from > kStep && (ZerosAt(begin + from) | ZerosAt(begin + from + sizeof(Word))) == 0) {
            from += kStep;
        }
        const size_t end = size - from > kStep ? from + kStep : size;
        for (; from < end; ++from) {
            if (begin[from] == 0 && (from + 1 == size || begin[from + 1] == 0)) {
                return from;
            }
        }
    }
    return size;
}

} // namespace codecs
