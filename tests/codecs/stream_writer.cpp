#include "tests/codecs/stream_writer.h"

namespace test_annexb {

using mkv_test::BitWriter;

namespace {

constexpr unsigned kFrameNumBits = 4;
constexpr unsigned kPocLsbBits = 4;
constexpr unsigned kHevcPocLsbBits = 8;

void SE(BitWriter& writer, int value) {
    writer.UE(value > 0 ? static_cast<uint64_t>(2 * value - 1) : static_cast<uint64_t>(-2 * value));
}

void End(BitWriter& writer) {
    writer.Flag(true);
}

} // namespace

Bytes Joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Bytes Unit(const Bytes& header, const BitWriter& payload, size_t startCodeBytes) {
    Bytes unit(startCodeBytes - 1, 0);
    unit.push_back(1);
    unit.insert(unit.end(), header.begin(), header.end());
    unsigned zeros = 0;
    for (const uint8_t byte : payload.Bytes()) {
        if (zeros >= 2 && byte <= 3) {
            unit.push_back(3);
            zeros = 0;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        unit.push_back(byte);
    }
    return unit;
}

Bytes WriteAvcSps(const AvcSpsShape& shape) {
    BitWriter writer;
    writer.Bits(77, 8).Bits(0, 8).Bits(30, 8).UE(0); // Main, level 3
    writer.UE(kFrameNumBits - 4).UE(shape.pocType);
    if (shape.pocType == 0) {
        writer.UE(kPocLsbBits - 4);
    } else if (shape.pocType == 1) {
        writer.Flag(true); // no differences in the slices
        SE(writer, shape.offsetForNonRefPic);
        SE(writer, 0);
        writer.UE(shape.cycle.size());
        for (const int offset : shape.cycle) {
            SE(writer, offset);
        }
    }
    const uint32_t mapUnits = shape.mapUnits != 0 ? shape.mapUnits : (shape.frameMbsOnly ? 15 : 8);
    writer.UE(4).Flag(false).UE(19).UE(mapUnits - 1).Flag(shape.frameMbsOnly);
    if (!shape.frameMbsOnly) {
        writer.Flag(false);
    }
    writer.Flag(true);
    if (shape.frameMbsOnly) {
        writer.Flag(false);
    } else {
        writer.Flag(true).UE(0).UE(0).UE(0).UE(4); // 256 - 16 lines
    }
    writer.Flag(shape.signal.has_value());
    if (shape.signal) {
        writer.Flag(true).Bits(2, 8);
        WriteSignal(writer, *shape.signal);
    }
    End(writer);
    return Unit({0x67}, writer);
}

Bytes WriteAvcPps() {
    BitWriter writer;
    writer.UE(0).UE(0).Flag(false).Flag(false).UE(0).UE(0).UE(0).Flag(false).Bits(0, 2);
    SE(writer, 0);
    SE(writer, 0);
    SE(writer, 0);
    writer.Bits(0, 2).Flag(false);
    End(writer);
    return Unit({0x68}, writer);
}

Bytes WriteAvcDelimiter() {
    return Unit({0x09}, BitWriter().Bits(0xf0, 8));
}

Bytes WriteAvcRecoveryPoint(uint32_t frames) {
    BitWriter message;
    message.UE(frames).Flag(true).Flag(false).Bits(0, 2).Flag(true);
    const Bytes content = message.Bytes();
    BitWriter writer;
    writer.Bits(6, 8).Bits(content.size(), 8);
    for (const uint8_t byte : content) {
        writer.Bits(byte, 8);
    }
    return Unit({0x06}, writer.Bits(0x80, 8));
}

Bytes WriteAvcSlice(const AvcSliceShape& slice, const AvcSpsShape& sps) {
    BitWriter writer;
    writer.UE(slice.firstMb).UE(slice.type).UE(0).Bits(slice.frameNum, kFrameNumBits);
    if (!sps.frameMbsOnly) {
        writer.Flag(slice.bottomField.has_value());
        if (slice.bottomField) {
            writer.Flag(*slice.bottomField);
        }
    }
    if (slice.isIdr) {
        writer.UE(0);
    }
    if (sps.pocType == 0) {
        writer.Bits(slice.pocLsb, kPocLsbBits);
    }
    if (slice.isReference && slice.isIdr) {
        writer.Bits(0, 2);
    } else if (slice.isReference) {
        if (slice.type == 5) {
            writer.Flag(false).Flag(false); // reference lists as they are
        }
        writer.Flag(slice.forgetsAll);
        if (slice.forgetsAll) {
            writer.UE(5).UE(0);
        }
    }
    writer.Bits(0xabcdef, 24);
    End(writer);
    const uint8_t header = static_cast<uint8_t>((slice.isReference ? 0x60 : 0) | (slice.isIdr ? 5 : 1));
    return Unit({header}, writer, slice.firstMb == 0 ? 4 : 3);
}

Bytes WriteHevcUnit(uint8_t type, const BitWriter& payload, uint8_t temporalId) {
    return Unit({static_cast<uint8_t>(type << 1), static_cast<uint8_t>(temporalId + 1)}, payload);
}

Bytes WriteHevcParameterSets() {
    BitWriter vps;
    vps.Bits(0x0c01ffff, 32).Flag(true);
    BitWriter sps;
    sps.Bits(0, 4).Bits(0, 3).Flag(true);
    sps.Bits(1, 8).Bits(0x60000000, 32).Bits(0x900000000000, 48).Bits(93, 8);
    sps.UE(0).UE(1).UE(320).UE(248).Flag(true).UE(0).UE(0).UE(0).UE(4); // 248 - 8 lines
    sps.UE(0).UE(0).UE(kHevcPocLsbBits - 4).Flag(true);
    BitWriter pps;
    pps.UE(0).UE(0).Flag(false).Flag(false).Bits(0, 3).Flag(true);
    return Joined({WriteHevcUnit(32, vps), WriteHevcUnit(33, sps), WriteHevcUnit(34, pps)});
}

Bytes WriteHevcSlice(uint8_t type, uint32_t pocLsb, uint8_t temporalId) {
    BitWriter writer;
    writer.Flag(true);
    if (type >= 16 && type <= 23) {
        writer.Flag(false);
    }
    writer.UE(0).UE(2);
    if (type != 19 && type != 20) {
        writer.Bits(pocLsb, kHevcPocLsbBits);
    }
    writer.Bits(0xabcdef, 24);
    End(writer);
    return WriteHevcUnit(type, writer, temporalId);
}

} // namespace test_annexb
