#include "sources/av1/temporal_units.h"

#include <algorithm>
#include <array>

#include "codecs/av1_obu.h"
#include "sources/base/limits.h"

namespace av1 {

namespace {

using codecs::Av1Obu;
using codecs::Av1ObuReader;
using codecs::Av1ObuType;
using codecs::Leb128;
using Bytes = std::span<const BYTE>;

constexpr size_t kMaxLengthBytes = 8;
constexpr size_t kMaxObuHeadBytes = 2 + kMaxLengthBytes;
constexpr size_t kBeginBytes = 64; // of a stream, which tell what it is
constexpr BYTE kSizeFlag = 2;
constexpr BYTE kExtensionFlag = 4;

struct ObuExtent {
    Av1ObuType type{};
    UINT64 end = 0;
};

// Of a unit with its size; none where the file ends before it does.
std::optional<ObuExtent> FindObu(const source::ByteSource& file, UINT64 position) {
    std::array<BYTE, kMaxObuHeadBytes> buffer{};
    const Bytes head = Bytes(buffer).first(file.ReadAt(position, buffer));
    const size_t headerBytes = !head.empty() && (head[0] & kExtensionFlag) != 0 ? 2 : 1;
    if (head.size() <= headerBytes || (head[0] & 0x80U) != 0 || (head[0] & kSizeFlag) == 0) {
        return std::nullopt;
    }
    const std::optional<Leb128> size = codecs::ReadLeb128(head.subspan(headerBytes));
    if (!size) {
        return std::nullopt;
    }
    const UINT64 end = position + headerBytes + size->bytes + size->value;
    const auto type = static_cast<Av1ObuType>(head[0] >> 3 & 0xf);
    return end <= file.Size() ? std::optional(ObuExtent{type, end}) : std::nullopt;
}

std::optional<TemporalUnit> FindByDelimiters(const source::ByteSource& file, UINT64 position) {
    TemporalUnit unit{position, position};
    while (unit.end < file.Size()) {
        const std::optional<ObuExtent> obu = FindObu(file, unit.end);
        if (!obu) {
            return std::nullopt;
        }
        if (obu->type == Av1ObuType::TemporalDelimiter && unit.end > position) {
            break;
        }
        unit.end = obu->end;
    }
    return unit.end - unit.start <= source::kMaxPacketBytes ? std::optional(unit) : std::nullopt;
}

std::optional<TemporalUnit> FindByLength(const source::ByteSource& file, UINT64 position) {
    std::array<BYTE, kMaxLengthBytes> head{};
    const std::optional<Leb128> size = codecs::ReadLeb128(Bytes(head).first(file.ReadAt(position, head)));
    if (!size || size->value > source::kMaxPacketBytes) {
        return std::nullopt;
    }
    const UINT64 start = position + size->bytes;
    return start + size->value <= file.Size() ? std::optional(TemporalUnit{start, start + size->value}) : std::nullopt;
}

// The bytes behind a length, which are taken away; none when there are fewer.
std::optional<Bytes> TakePart(Bytes& bytes) {
    const std::optional<Leb128> size = codecs::ReadLeb128(bytes);
    if (!size || size->value > bytes.size() - size->bytes) {
        return std::nullopt;
    }
    const Bytes part = bytes.subspan(size->bytes, static_cast<size_t>(size->value));
    bytes = bytes.subspan(size->bytes + part.size());
    return part;
}

// A length of the temporal unit, of the frame and of the delimiter; then that one, of one byte or two.
bool BeginsWithLengths(Bytes head) {
    const std::optional<Leb128> unit = codecs::ReadLeb128(head);
    const std::optional<Leb128> frame = unit ? codecs::ReadLeb128(head.subspan(unit->bytes)) : std::nullopt;
    if (!frame || frame->value >= unit->value) {
        return false;
    }
    Bytes rest = head.subspan(unit->bytes + frame->bytes);
    const std::optional<Bytes> delimiter = TakePart(rest);
    if (!delimiter || delimiter->empty() || delimiter->size() > 2) {
        return false;
    }
    Av1ObuReader reader(*delimiter);
    const std::optional<Av1Obu> obu = reader.Next();
    return obu && obu->type == Av1ObuType::TemporalDelimiter && obu->payload.empty();
}

} // namespace

std::optional<StreamForm> FormOfStream(const source::ByteSource& file) {
    const std::optional<ObuExtent> first = FindObu(file, 0);
    if (first && first->type == Av1ObuType::TemporalDelimiter && FindObu(file, first->end)) {
        return StreamForm::LowOverhead;
    }
    std::array<BYTE, kBeginBytes> head{};
    const size_t size = file.ReadAt(0, head);
    return BeginsWithLengths(Bytes(head).first(size)) ? std::optional(StreamForm::AnnexB) : std::nullopt;
}

std::optional<TemporalUnit> FindTemporalUnit(const source::ByteSource& file, StreamForm form, UINT64 position) {
    return form == StreamForm::LowOverhead ? FindByDelimiters(file, position) : FindByLength(file, position);
}

std::vector<BYTE> WithSizes(Bytes unit) {
    std::vector<BYTE> sized;
    sized.reserve(unit.size());
    while (!unit.empty()) {
        std::optional<Bytes> frame = TakePart(unit);
        while (frame && !frame->empty()) {
            const std::optional<Bytes> bytes = TakePart(*frame);
            Av1ObuReader reader(bytes.value_or(Bytes()));
            const std::optional<Av1Obu> obu = reader.Next();
            if (!obu) {
                return {};
            }
            codecs::AppendSizedAv1Obu(sized, *obu);
        }
        if (!frame) {
            return {};
        }
    }
    return sized;
}

} // namespace av1
