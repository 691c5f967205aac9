#include "report/timeline_picture.h"

#include <algorithm>
#include <cmath>

#include "media/track_type.h"
#include "report/html_text.h"

namespace report {

namespace {

constexpr double kNsPerSecond = 1e9;
constexpr double kLeft = 150; // where the time begins
constexpr double kWidth = 1000;
constexpr double kRight = 1160;
constexpr double kTrackHeight = 64;
constexpr double kRowHeight = 26;
constexpr double kGapBetween = 14;
constexpr size_t kMostShownTracks = 24;
constexpr size_t kMostNamedTracks = 8; // where a cell is pointed at

std::string Attribute(const char* name, double value) {
    return std::string(" ") + name + "=\"" + Fixed(value, 2) + "\"";
}

std::string Rect(const char* cssClass, double x, double y, double width, double height, const std::string& title) {
    return std::string("<rect class=\"") + cssClass + "\"" + Attribute("x", x) + Attribute("y", y) +
           Attribute("width", width) + Attribute("height", height) + "><title>" + title + "</title></rect>\n";
}

std::string Text(const char* cssClass, double x, double y, const std::string& text) {
    return std::string("<text class=\"") + cssClass + "\"" + Attribute("x", x) + Attribute("y", y) + ">" + text +
           "</text>\n";
}

// Round ones, of which ten at most make the whole.
double StepOf(double seconds) {
    constexpr double kMostSteps = 10;
    for (const double step :
         {0.001, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1,   0.2,   0.5,   1.0,    2.0,    5.0,    10.0,
          15.0,  30.0,  60.0,  120., 300., 600., 900.0, 1800., 3600., 7200.0, 10800., 21600., 43200.}) {
        if (seconds / step <= kMostSteps) {
            return step;
        }
    }
    constexpr double kDay = 86400;
    return std::ceil(seconds / kMostSteps / kDay) * kDay;
}

std::string AxisText(double seconds, double step) {
    constexpr double kHalf = 5e5; // what a sum of steps is off by is rounded away
    const std::string text = TimeText(static_cast<UINT64>(seconds * kNsPerSecond + kHalf));
    constexpr size_t kFraction = 4; // ".000"
    return step < 1 ? text : text.substr(0, text.size() - kFraction);
}

// Draws row by row, downwards.
class Painter {
  public:
    explicit Painter(const FileFacts& facts)
        : m_facts(facts), m_cells(std::max<size_t>(facts.timeline.Cells(), 1)),
          m_cellWidth(kWidth / static_cast<double>(m_cells)) {}

    std::string Paint() {
        PaintMarks("clusters", "cluster", false, m_facts.clusters);
        PaintMarks("cue points", "cue", true, m_facts.cuePoints);
        const size_t shown = std::min(m_facts.tracks.size(), kMostShownTracks);
        for (size_t i = 0; i < shown; ++i) {
            PaintTrack(m_facts.tracks[i], i);
        }
        if (shown < m_facts.tracks.size()) {
            m_svg += Text("label", 0, m_y + kRowHeight / 2, CountText(m_facts.tracks.size() - shown) + " more tracks");
            m_y += kRowHeight;
        }
        PaintLag();
        PaintAxis();
        PaintPointers();
        return "<svg id=\"timeline\" role=\"img\" aria-label=\"What the file holds over time\" viewBox=\"0 0 1170 " +
               Fixed(m_y, 0) + "\">\n" + m_svg + "</svg>\n";
    }

  private:
    [[nodiscard]] UINT64 NsOf(UINT64 ticks) const { return report::NsOf(m_facts, ticks); }
    [[nodiscard]] UINT64 NsOfCell(size_t cell) const { return NsOf(cell * m_facts.timeline.CellTicks()); }
    [[nodiscard]] double XOfCell(size_t cell) const { return kLeft + static_cast<double>(cell) * m_cellWidth; }
    [[nodiscard]] double XOf(UINT64 ticks) const {
        return kLeft +
               std::min(static_cast<double>(ticks) / static_cast<double>(m_facts.timeline.CellTicks()) * m_cellWidth,
                        kWidth);
    }

    void PaintMarks(const char* label, const char* cssClass, bool cues, UINT64 all) {
        m_svg += Text("label", 0, m_y + kRowHeight / 2 + 4, std::string(label) + " (" + CountText(all) + ")");
        m_svg += PathOfMarks(0, cssClass, cues, m_y, m_y + kRowHeight);
        m_y += kRowHeight + kGapBetween / 2;
    }

    // A line in each cell that has some; all in one path.
    [[nodiscard]] std::string PathOfMarks(size_t row, const char* cssClass, bool keys, double top,
                                          double bottom) const {
        std::string path;
        const auto& cells = m_facts.timeline.Row(row);
        for (size_t i = 0; i < m_cells; ++i) {
            if ((keys ? cells[i].keys : cells[i].blocks) != 0) {
                path += "M" + Fixed(XOfCell(i) + m_cellWidth / 2, 2) + " " + Fixed(top, 1) + "V" + Fixed(bottom, 1);
            }
        }
        return path.empty() ? "" : std::string("<path class=\"mark ") + cssClass + "\" d=\"" + path + "\"/>\n";
    }

    [[nodiscard]] double RateOfCell(const Cell& cell) const {
        return RateOf(m_facts, cell.bytes, m_facts.timeline.CellTicks());
    }

    void PaintTrack(const TrackReport& track, size_t index) {
        const auto& cells = m_facts.timeline.Row(track.row);
        const auto most = std::max_element(cells.begin(), cells.end(),
                                           [](const Cell& a, const Cell& b) { return a.bytes < b.bytes; });
        const double peak = RateOfCell(*most);
        const double bottom = m_y + kTrackHeight;
        m_svg += Text("label", 0, m_y + 14, TrackTitle(track));
        m_svg += Text("detail", 0, m_y + 30, Escaped(track.codecId.substr(0, 20)));
        m_svg += Text("detail", 0, m_y + 45, "up to " + RateText(peak));
        m_svg += Rect("ground", kLeft, m_y, kWidth, kTrackHeight, TrackTitle(track));
        std::string path = "M" + Fixed(kLeft, 1) + " " + Fixed(bottom, 1);
        for (size_t i = 0; i < m_cells && most->bytes > 0; ++i) {
            const double height = static_cast<double>(cells[i].bytes) / static_cast<double>(most->bytes);
            path += "L" + Fixed(XOfCell(i), 2) + " " + Fixed(bottom - height * (kTrackHeight - 10), 1) + "H" +
                    Fixed(XOfCell(i + 1), 2);
        }
        constexpr size_t kColours = 4;
        m_svg += "<path class=\"rate c" + std::to_string(index % kColours) + "\" d=\"" + path + "V" + Fixed(bottom, 1) +
                 "Z\"/>\n";
        if (track.keyframes < track.blocks) {
            m_svg += PathOfMarks(track.row, "key", true, m_y, m_y + 8);
        }
        PaintGaps(track);
        m_y += kTrackHeight + kGapBetween;
    }

    void PaintGaps(const TrackReport& track) {
        for (const Gap& gap : track.gaps) {
            const double width = std::max(XOf(gap.to) - XOf(gap.from), 1.5);
            m_svg += Rect("gap", XOf(gap.from), m_y, width, kTrackHeight,
                          "nothing from " + TimeText(NsOf(gap.from)) + " to " + TimeText(NsOf(gap.to)));
        }
    }

    [[nodiscard]] UINT64 LagOfCell(size_t cell) const {
        UINT64 lag = 0;
        for (const TrackReport& track : m_facts.tracks) {
            lag = std::max(lag, m_facts.timeline.Row(track.row)[cell].lag);
        }
        return lag;
    }

    void PaintLag() {
        UINT64 most = 0;
        for (size_t i = 0; i < m_cells; ++i) {
            most = std::max(most, LagOfCell(i));
        }
        const double height = kTrackHeight / 2;
        const double bottom = m_y + height;
        m_svg += Text("label", 0, m_y + 14, "tracks apart");
        m_svg += Text("detail", 0, m_y + 30, most == 0 ? "never" : "up to " + TimeText(NsOf(most)));
        m_svg += Rect("ground", kLeft, m_y, kWidth, height, "how far a block stands behind those of other tracks");
        std::string path = "M" + Fixed(kLeft, 1) + " " + Fixed(bottom, 1);
        for (size_t i = 0; i < m_cells; ++i) {
            const double share = static_cast<double>(LagOfCell(i)) / static_cast<double>(std::max<UINT64>(most, 1));
            path += "L" + Fixed(XOfCell(i), 2) + " " + Fixed(bottom - share * (height - 4), 1) + "H" +
                    Fixed(XOfCell(i + 1), 2);
        }
        m_svg += "<path class=\"lag\" d=\"" + path + "V" + Fixed(bottom, 1) + "Z\"/>\n";
        m_y += height + kGapBetween;
    }

    void PaintAxis() {
        const double seconds = static_cast<double>(NsOfCell(m_cells)) / kNsPerSecond;
        const double step = StepOf(seconds);
        for (double at = 0; at <= seconds; at += step) {
            const double x = kLeft + at / seconds * kWidth;
            m_svg += "<path class=\"tick\" d=\"M" + Fixed(x, 1) + " 0V" + Fixed(m_y, 1) + "\"/>\n";
            m_svg += Text("time", x, m_y + 14, AxisText(at, step));
        }
        m_bottom = m_y;
        m_y += 24;
    }

    // What a cell holds, where it is pointed at.
    void PaintPointers() {
        for (size_t i = 0; i < m_cells; ++i) {
            std::string title = TimeText(NsOfCell(i)) + " – " + TimeText(NsOfCell(i + 1));
            for (size_t t = 0; t < std::min(m_facts.tracks.size(), kMostNamedTracks); ++t) {
                const Cell& cell = m_facts.timeline.Row(m_facts.tracks[t].row)[i];
                title += "\n" + TrackTitle(m_facts.tracks[t]) + ": " + RateText(RateOfCell(cell)) + ", " +
                         CountText(cell.blocks) + " blocks, " + CountText(cell.keys) + " of them keyframes";
            }
            const Cell& file = m_facts.timeline.Row(0)[i];
            title += "\n" + CountText(file.blocks) + " clusters, " + CountText(file.keys) + " cue points, " +
                     TimeText(NsOf(LagOfCell(i))) + " apart";
            m_svg += Rect("pointer", XOfCell(i), 0, m_cellWidth, m_bottom, title);
        }
    }

    const FileFacts& m_facts;
    const size_t m_cells;
    const double m_cellWidth;
    std::string m_svg;
    double m_y = 0;
    double m_bottom = 0;
};

const char* ClassOfPiece(const Piece& piece) {
    if (piece.name == "Cluster") {
        return "cluster";
    }
    if (piece.name == "damaged") {
        return "damage";
    }
    return piece.name == "Cues" ? "cues" : "head";
}

} // namespace

std::string TimelinePicture(const FileFacts& facts) {
    return Painter(facts).Paint();
}

std::string BytesPicture(const FileFacts& facts) {
    constexpr double kHeight = 30;
    const double bytes = std::max(static_cast<double>(facts.bytes), 1.0);
    std::string svg = "<svg id=\"bytes\" role=\"img\" aria-label=\"Where the bytes of the file go\" "
                      "viewBox=\"0 0 1170 32\">\n";
    for (const Piece& piece : facts.pieces) {
        const double x = static_cast<double>(piece.start) / bytes * kRight;
        const double width = static_cast<double>(piece.end - piece.start) / bytes * kRight;
        const std::string count = piece.count > 1 ? CountText(piece.count) + " × " : "";
        svg += Rect(ClassOfPiece(piece), x, 0, std::max(width, 1.5), kHeight,
                    count + Escaped(piece.name) + ": " + BytesText(piece.end - piece.start) + " at " +
                        CountText(piece.start));
    }
    return svg + "</svg>\n";
}

std::string TrackTitle(const TrackReport& track) {
    std::string kind = "other";
    if (track.type == UINT64{media::kTrackTypeVideo}) {
        kind = "video";
    } else if (track.type == UINT64{media::kTrackTypeAudio}) {
        kind = "audio";
    } else if (track.type == UINT64{media::kTrackTypeSubtitle}) {
        kind = "subtitles";
    } else if (track.type == 0) {
        kind = "not declared";
    }
    return "track " + std::to_string(track.number) + ": " + kind;
}

double RateOf(const FileFacts& facts, UINT64 bytes, UINT64 ticks) {
    constexpr double kBits = 8;
    const double seconds = static_cast<double>(ticks) * static_cast<double>(facts.scaleNs) / kNsPerSecond;
    return seconds > 0 ? static_cast<double>(bytes) * kBits / seconds : 0;
}

} // namespace report
