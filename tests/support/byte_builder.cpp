#include "tests/support/byte_builder.h"

#include "tests/support/ebml_schema.h"

namespace test_support {

namespace {

void AppendBigEndian(RawBytes& bytes, uint64_t value, uint32_t count) {
    for (uint32_t left = count; left > 0; --left) {
        bytes.push_back(static_cast<uint8_t>(value >> (8 * (left - 1))));
    }
}

uint32_t BytesNeeded(uint64_t value) {
    uint32_t count = 1;
    while (count < sizeof(value) && value >> (8 * count) != 0) {
        ++count;
    }
    return count;
}

} // namespace

RawBytes Concatenate(std::initializer_list<RawBytes> parts) {
    RawBytes all;
    for (const RawBytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

RawBytes RawId(uint32_t id) {
    RawBytes bytes;
    AppendBigEndian(bytes, id, BytesNeeded(id));
    return bytes;
}

RawBytes RawSize(uint64_t size, uint32_t fieldBytes) {
    RawBytes bytes;
    AppendBigEndian(bytes, size | uint64_t{1} << (7 * fieldBytes), fieldBytes);
    return bytes;
}

RawBytes RawElement(uint32_t id, const RawBytes& data, uint32_t sizeFieldBytes) {
    return Concatenate({RawId(id), RawSize(data.size(), sizeFieldBytes), data});
}

RawBytes RawUnsigned(uint32_t id, uint64_t value) {
    RawBytes data;
    AppendBigEndian(data, value, BytesNeeded(value));
    return RawElement(id, data);
}

RawBytes RawText(uint32_t id, std::string_view text) {
    return RawElement(id, RawBytes(text.begin(), text.end()));
}

RawBytes RawSimpleBlock(uint8_t track, int16_t relativeTime, uint8_t flags, const RawBytes& payload) {
    RawBytes data{static_cast<uint8_t>(0x80 | track)};
    AppendBigEndian(data, static_cast<uint16_t>(relativeTime), sizeof(relativeTime));
    data.push_back(flags);
    return RawElement(ebml_id::kSimpleBlock, Concatenate({data, payload}), 2);
}

} // namespace test_support
