#include "tools/matroska_source/avc_private.h"

#include "mkv/annexb_converter.h"
#include "tools/matroska_source/big_endian.h"

namespace matroska {

namespace {

constexpr size_t kHeadBytes = 6; // up to and with the number of sequence parameter sets
constexpr BYTE kCountMask = 0x1f;
constexpr BYTE kLengthMask = 0x03;
constexpr size_t kSetLengthBytes = mkv::kParameterSetLengthSizeBytes;

// Appends so many sets with their lengths, and takes them off the record's front.
void TakeSets(Bytes& record, size_t count, std::vector<BYTE>& sets) {
    for (size_t i = 0; i < count && record.size() >= kSetLengthBytes; ++i) {
        const size_t bytes = kSetLengthBytes + static_cast<size_t>(BigEndian(record.first(kSetLengthBytes)));
        if (bytes > record.size()) {
            record = {};
            return;
        }
        sets.insert(sets.end(), record.begin(), record.begin() + static_cast<std::ptrdiff_t>(bytes));
        record = record.subspan(bytes);
    }
}

} // namespace

AvcPrivate ParseAvcPrivate(Bytes record) {
    AvcPrivate avc;
    if (record.size() < kHeadBytes) {
        return avc;
    }
    avc.profile = record[1];
    avc.level = record[3];
    avc.lengthBytes = static_cast<size_t>(record[4] & kLengthMask) + 1;
    const size_t sequenceSets = record[5] & kCountMask;
    record = record.subspan(kHeadBytes);
    TakeSets(record, sequenceSets, avc.parameterSets);
    if (!record.empty()) {
        const size_t pictureSets = record[0];
        record = record.subspan(1);
        TakeSets(record, pictureSets, avc.parameterSets);
    }
    return avc;
}

std::vector<BYTE> WidenLengths(Bytes sample, size_t lengthBytes) {
    std::vector<BYTE> wide;
    while (sample.size() > lengthBytes) {
        const auto length = static_cast<size_t>(BigEndian(sample.first(lengthBytes)));
        sample = sample.subspan(lengthBytes);
        if (length > sample.size()) {
            break;
        }
        for (size_t byte = mkv::kSampleLengthSizeBytes; byte-- > 0;) {
            wide.push_back(static_cast<BYTE>(length >> (8 * byte)));
        }
        wide.insert(wide.end(), sample.begin(), sample.begin() + static_cast<std::ptrdiff_t>(length));
        sample = sample.subspan(length);
    }
    return wide;
}

} // namespace matroska
