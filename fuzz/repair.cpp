// Bytes as a recording that is to be finished; and as a cut of a real one, with some of its bytes changed: the first
// two say where it ends, each further three a change. What is refused stays as it is. What is repaired is finished
// then, is no longer than before but for what is added, and repaired once more it stays as it is.
#include <algorithm>
#include <cstdint>

#include "fuzz/require.h"
#include "mkv/mkv_writer.h"
#include "repair/finish_recording.h"
#include "repair/refusal.h"
#include "tests/support/media_types.h"
#include "tests/support/memory_stream.h"

namespace {

using fuzz::Require;
using Bytes = std::vector<BYTE>;

repair::Recording Survey(IStream& stream) {
    return repair::SurveyRecording(stream, [](UINT64, UINT64) {});
}

void Repair(const Bytes& bytes) {
    test_support::MemoryStream stream;
    stream.SetRecording(false);
    stream.SetBytes(bytes);
    try {
        const repair::Recording recording = Survey(stream);
        Require(recording.isFinished || recording.cut.end <= bytes.size());
        repair::FinishRecording(stream, recording);
        const Bytes repaired = stream.Bytes();
        Require(!recording.isFinished || repaired == bytes);
        Require(Survey(stream).isFinished);
    } catch (const repair::Refusal&) {
        Require(stream.Bytes() == bytes);
    }
}

// Three tracks in some clusters, cut off before it was finished.
Bytes MakeRecording() {
    test_support::MemoryStream stream;
    CMkvIO io;
    CMkvWriter writer;
    io.setStream(&stream);
    const records::CTrackSettingsRow row(TrackSettings{0, 1, 0, 0, nullptr, nullptr, -1});
    writer.registerTrack(test_support::VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd')).Get(), row.Get());
    writer.registerTrack(test_support::WaveType(mediasubtype::kPcm).Get(), row.Get());
    writer.registerTrack(test_support::SubtitleType(mediasubtype::kUtf8).Get(), row.Get());
    writer.Open(&io);
    constexpr INT64 kPicture = 400000;
    const Bytes payload(9, 7);
    for (INT64 i = 0; i < 12; ++i) {
        for (UINT32 track = 0; track < 3; ++track) {
            writer.WritePacket({i * kPicture, (i + 1) * kPicture, payload.data(), static_cast<UINT32>(payload.size()),
                                i % 3 == 0, track, track == 2});
        }
    }
    const Bytes open = stream.Bytes(); // without the last cluster
    writer.abandon();
    io.releaseStream();
    return open;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    Repair({data, data + size});
    static const Bytes recording = MakeRecording();
    Bytes changed = recording;
    const auto number = [&](size_t at) { return at + 1 < size ? size_t{data[at]} << 8 | data[at + 1] : size_t{0}; };
    changed.resize(changed.size() - number(0) % changed.size());
    for (size_t at = 2; at + 2 < size; at += 3) {
        changed[number(at) % changed.size()] = data[at + 2];
    }
    Repair(changed);
    return 0;
}
