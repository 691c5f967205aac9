#include "mkvmux/run_figures.h"

#include <gtest/gtest.h>

namespace mkvmux {
namespace {

constexpr INT64 kSecond = 10'000'000;

RunFigures Example() {
    RunFigures figures;
    figures.file.bytesWritten = 34'500'000;
    figures.file.clusters = 67;
    figures.file.writes = 321;
    figures.file.writeTime = 3 * kSecond / 10;
    figures.file.longestWrite = kSecond / 50;
    figures.file.elapsed = 10 * kSecond;
    figures.length = 83 * kSecond;
    RunFigures::Track video;
    video.number = 0;
    video.input.packets = 2075;
    video.input.bytes = 33'000'000;
    video.input.queuedBytes = 1'234'567;
    video.input.queuePeak = 5'000'000;
    RunFigures::Track sound;
    sound.number = 3;
    sound.input.packets = 3900;
    sound.input.bytes = 1'300'000;
    sound.input.late = 4;
    sound.input.dropped = 5;
    sound.input.silences = 6;
    sound.input.isSilent = 1;
    figures.tracks = {video, sound};
    return figures;
}

TEST(RunFigures, TheLineTellsLengthBytesWritesAndQueues) {
    EXPECT_EQ("0:01:23 in 10 s, 34.5 MB, 67 clusters, Write 3 % (longest 0.020 s), queued 0: 1.2 MB 3: 0 B (silent)",
              StatusLine(Example(), 400));
}

TEST(RunFigures, TheLineIsNoLongerThanTheTerminalIsWide) {
    EXPECT_EQ("0:01:23 in 10 s", StatusLine(Example(), 15));
}

TEST(RunFigures, OfARunThatHasNotBegunAllIsZero) {
    EXPECT_EQ("0:00:00 in 0 s, 0 B, 0 clusters, Write 0 % (longest 0.000 s), queued", StatusLine(RunFigures(), 400));
}

TEST(RunFigures, TheTableHasALineATrackUnderItsColumns) {
    EXPECT_EQ("track    packets           bytes     kbit/s  queue's peak    late  dropped  silences\n"
              "    0       2075        33000000     3180.7        5.0 MB       0        0         0\n"
              "    3       3900         1300000      125.3           0 B       4        5         6\n"
              "67 clusters in 10.0 s; 321 writes took 0.300 s, the longest 0.020 s\n",
              FiguresTable(Example()));
}

} // namespace
} // namespace mkvmux
