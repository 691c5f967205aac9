#include "mkvmux/run_figures.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "client/module_config.h"
#include "mkvmux/mux_graph.h"

namespace mkvmux {

namespace {

constexpr double kUnitsPerSecond = 1e7;

double Seconds(INT64 units) {
    return static_cast<double>(units) / kUnitsPerSecond;
}

std::string Fixed(double number, int digits) {
    char text[64];
    std::snprintf(text, sizeof(text), "%.*f", digits, number);
    return text;
}

// "1.2 MB"
std::string BytesText(UINT64 bytes) {
    constexpr double kThousand = 1000;
    constexpr const char* kUnits[] = {" B", " kB", " MB", " GB", " TB"};
    auto number = static_cast<double>(bytes);
    size_t unit = 0;
    while (number >= kThousand && unit + 1 < std::size(kUnits)) {
        number /= kThousand;
        ++unit;
    }
    return Fixed(number, unit == 0 ? 0 : 1) + kUnits[unit];
}

// "0:01:23"
std::string ClockText(INT64 units) {
    constexpr INT64 kSixty = 60;
    const auto seconds = static_cast<INT64>(Seconds(units));
    char text[48];
    std::snprintf(text, sizeof(text), "%" PRId64 ":%02" PRId64 ":%02" PRId64,
                  static_cast<int64_t>(seconds / (kSixty * kSixty)), static_cast<int64_t>(seconds / kSixty % kSixty),
                  static_cast<int64_t>(seconds % kSixty));
    return text;
}

std::string Share(INT64 part, INT64 whole) {
    constexpr double kPercent = 100;
    return Fixed(whole > 0 ? static_cast<double>(part) / static_cast<double>(whole) * kPercent : 0, 0) + " %";
}

std::string Padded(const std::string& text, size_t width) {
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

std::string RateText(UINT64 bytes, INT64 length) {
    constexpr double kKilobitsPerByte = 8.0 / 1000;
    return Fixed(length > 0 ? static_cast<double>(bytes) * kKilobitsPerByte / Seconds(length) : 0, 1);
}

std::string TableLine(const RunFigures::Track& track, INT64 length) {
    const MuxInputStatistics& input = track.input;
    return Padded(std::to_string(track.number), 5) + Padded(std::to_string(input.packets), 11) +
           Padded(std::to_string(input.bytes), 16) + Padded(RateText(input.bytes, length), 11) +
           Padded(BytesText(input.queuePeak), 14) + Padded(std::to_string(input.late), 8) +
           Padded(std::to_string(input.dropped), 9) + Padded(std::to_string(input.silences), 10) + "\n";
}

} // namespace

RunFigures ReadFigures(const MuxGraph& graph) {
    const client::ModuleConfig config(graph.Muxer().Get());
    RunFigures figures;
    (void)config.GetStatistics(figures.file);
    (void)config.GetPosition(figures.length);
    for (size_t i = 0; i < graph.Streams().size(); ++i) {
        RunFigures::Track& track = figures.tracks.emplace_back();
        track.number = graph.Streams()[i].number;
        (void)config.GetInputStatistics(static_cast<INT32>(i), track.input);
    }
    return figures;
}

std::string StatusLine(const RunFigures& figures, size_t columns) {
    const MuxStatistics& file = figures.file;
    std::string line = ClockText(figures.length) + " in " + Fixed(Seconds(file.elapsed), 0) + " s, " +
                       BytesText(file.bytesWritten) + ", " + std::to_string(file.clusters) + " clusters, Write " +
                       Share(file.writeTime, file.elapsed) + " (longest " + Fixed(Seconds(file.longestWrite), 3) +
                       " s), queued";
    for (const RunFigures::Track& track : figures.tracks) {
        line += " " + std::to_string(track.number) + ": " + BytesText(track.input.queuedBytes) +
                (track.input.isSilent != 0 ? " (silent)" : "");
    }
    return line.substr(0, columns);
}

std::string FiguresTable(const RunFigures& figures) {
    const MuxStatistics& file = figures.file;
    std::string text = "track    packets           bytes     kbit/s  queue's peak    late  dropped  silences\n";
    for (const RunFigures::Track& track : figures.tracks) {
        text += TableLine(track, figures.length);
    }
    return text + std::to_string(file.clusters) + " clusters in " + Fixed(Seconds(file.elapsed), 1) + " s; " +
           std::to_string(file.writes) + " writes took " + Fixed(Seconds(file.writeTime), 3) + " s, the longest " +
           Fixed(Seconds(file.longestWrite), 3) + " s\n";
}

} // namespace mkvmux
