#include <algorithm>

#include "bench/native/file_check.h"
#include "bench/native/peers.h"
#include "bench/native/rows.h"

namespace bench {

namespace {

// The runs take turns, one more or less first in each round; a run before the first round makes
// the files, which must hold every packet.
void Compare(const NativePlan& plan, Report& report, const std::string& row, const PacketLoad& load,
             std::vector<Peer> peers, int rounds) {
    KeepFreedMemory();
    std::erase_if(peers, [&](const Peer& peer) { return !plan.only.empty() && plan.only != peer.name; });
    report.Describe(row, "packets", load.Packets().size());
    report.Describe(row, "bytes", load.Bytes());
    for (const Peer& peer : peers) {
        peer.write(load, plan.File(row, peer.name));
        if (peer.finished) {
            CheckFile(load, plan.File(row, peer.name));
        }
    }
    for (int round = 0; round < rounds; ++round) {
        for (size_t i = 0; i < peers.size(); ++i) {
            const Peer& peer = peers[(i + static_cast<size_t>(round)) % peers.size()];
            report.Add(row, peer.name, Measure([&] { peer.write(load, plan.File(row, peer.name)); }));
        }
    }
}

std::vector<Peer> AllPeers() {
    std::vector<Peer> peers = {kOurs, kLibavformat, kLibmatroska, kFloor};
#ifdef QRX_WITH_LIBWEBM
    peers.push_back(kLibwebm);
#endif
    return peers;
}

} // namespace

void MeasureFilm(const NativePlan& plan, Report& report) {
    Compare(plan, report, "film", FilmLoad(), AllPeers(), plan.Rounds());
}

void MeasureSmallPackets(const NativePlan& plan, Report& report) {
    constexpr UINT32 kTracks = 4;
    constexpr size_t kPackets = 400000;
    constexpr size_t kBytes = 62;
    Compare(plan, report, "small packets", OpusLoad(kTracks, kPackets, kBytes), AllPeers(), plan.Rounds());
}

void MeasurePacketSizes(const NativePlan& plan, Report& report) {
    constexpr size_t kBytesOfRun = 160000000;
    constexpr size_t kMostPackets = 200000;
    for (const size_t bytes : {62U, 256U, 1024U, 4096U, 16384U, 65536U, 262144U}) {
        const size_t packets = std::min(kMostPackets, kBytesOfRun / bytes) / (plan.quick ? 2 : 1);
        Compare(plan, report, "size " + std::to_string(bytes), OpusLoad(1, packets, bytes),
                {kOurs, kLibavformat, kFloor}, plan.quick ? 3 : 5);
    }
}

void MeasureInputs(const NativePlan& plan, Report& report) {
    KeepFreedMemory();
    const size_t packets = plan.quick ? 160000 : 320000;
    constexpr size_t kBytes = 62;
    const UINT32 counts[] = {1, 8, 64};
    std::vector<PacketLoad> loads;
    for (const UINT32 count : counts) {
        loads.push_back(OpusLoad(count, packets, kBytes));
    }
    report.Describe("inputs", "packets", packets);
    for (int round = -1; round < plan.Rounds(); ++round) { // the first makes the files
        for (size_t i = 0; i < loads.size(); ++i) {
            for (const Peer& peer : {kOurs, kLibavformat}) {
                const std::string run = std::string(peer.name) + " " + std::to_string(counts[i]);
                const Usage usage = Measure([&] { peer.write(loads[i], plan.File("inputs", run)); });
                if (round >= 0) {
                    report.Add("inputs", run, usage);
                }
            }
        }
    }
}

void MeasureStartCodes(const NativePlan& plan, Report& report) {
    KeepFreedMemory();
    const size_t packets = plan.quick ? 2000 : 4000;
    const PacketLoad lengths = SlicedVideoLoad(packets, PacketLoad::Units::Lengths);
    const PacketLoad startCodes = SlicedVideoLoad(packets, PacketLoad::Units::StartCodes);
    report.Describe("start codes", "packets", packets);
    report.Describe("start codes", "bytes", lengths.Bytes());
    for (int round = -1; round < plan.Rounds(); ++round) {
        const Usage plain = Measure([&] { kOurs.write(lengths, plan.File("start codes", "lengths")); });
        const Usage rewritten = Measure([&] { kOurs.write(startCodes, plan.File("start codes", "start codes")); });
        if (round >= 0) {
            report.Add("start codes", "lengths", plain);
            report.Add("start codes", "start codes", rewritten);
        }
    }
}

} // namespace bench
