#include <stdexcept>

#include "bench/baselines.h"
#include "bench/null_stream.h"
#include "bench/stopwatch.h"
#include "mkv/mkv_writer.h"

namespace bench {

namespace {

mkv::Packet PacketOf(const Load& load, UINT64 packet, size_t input) {
    mkv::Packet out;
    out.start = load.StartOf(packet);
    out.stop = out.start + load.packetTicks;
    out.data = load.payload.data();
    out.size = static_cast<UINT32>(load.payload.size());
    out.syncPoint = load.IsKeyframe(packet);
    out.stream = static_cast<UINT32>(input);
    return out;
}

void RegisterTracks(CMkvWriter& writer, const Load& load) {
    for (size_t i = 0; i < load.inputs; ++i) {
        const records::CTrackSettingsRow row(static_cast<int>(i));
        writer.registerTrack(load.type.Get(), row.Get());
    }
}

double WriteAll(CMkvWriter& writer, const Load& load) {
    const Stopwatch watch;
    for (UINT64 packet = 0; packet < load.packetsPerInput; ++packet) {
        for (size_t input = 0; input < load.inputs; ++input) {
            writer.WritePacket(PacketOf(load, packet, input));
        }
    }
    writer.Close();
    return watch.Seconds();
}

} // namespace

double BareWriterSeconds(const Load& load) {
    PlainNullStream stream;
    CMkvIO io;
    io.setStream(&stream);
    CMkvWriter writer;
    try {
        RegisterTracks(writer, load);
        writer.Open(&io);
        return WriteAll(writer, load);
    } catch (const char* text) {
        throw std::runtime_error(text);
    }
}

} // namespace bench
