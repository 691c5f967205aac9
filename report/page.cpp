#include "report/page.h"

#include <algorithm>

#include "report/html_text.h"
#include "report/timeline_picture.h"
#include "report/tree_text.h"

namespace report {

namespace {

constexpr const char* kStyle = R"(<style>
:root { color-scheme: light dark; --ground: #fbfbfa; --ink: #20242a; --faint: #6b7280; --line: #dcdfe3; --panel: #fff;
  --c0: #2f6fdd; --c1: #c2571a; --c2: #2c8a57; --c3: #8a4fbf; --cluster: #9aa4b2; --cue: #0e8fa3; --bad: #d22f3b;
  --lag: #b38600; }
@media (prefers-color-scheme: dark) { :root { --ground: #15181c; --ink: #e4e7eb; --faint: #99a1ac; --line: #343a42;
  --panel: #1c2025; --c0: #6ea3ff; --c1: #f0935a; --c2: #62c48f; --c3: #bd8cf0; --cluster: #6d7785; --cue: #3cc1d6;
  --bad: #ff6b74; --lag: #e0b83c; } }
body { background: var(--ground); color: var(--ink); font: 15px/1.5 system-ui, sans-serif; margin: 0 auto;
  max-width: 1240px; padding: 24px; }
h1 { font-size: 24px; margin: 0; overflow-wrap: anywhere; }
h2 { font-size: 17px; margin: 32px 0 8px; }
p.lead { color: var(--faint); margin: 2px 0 0; overflow-wrap: anywhere; }
.panel { background: var(--panel); border: 1px solid var(--line); border-radius: 8px; padding: 14px 16px;
  overflow-x: auto; }
dl { display: grid; gap: 4px 24px; grid-template-columns: repeat(auto-fit, minmax(150px, 1fr)); margin: 0; }
dt { color: var(--faint); font-size: 13px; } dd { font-size: 17px; margin: 0; overflow-wrap: anywhere; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; width: 100%; }
th, td { border-bottom: 1px solid var(--line); padding: 5px 14px 5px 0; text-align: left; vertical-align: top; }
th { color: var(--faint); font-size: 13px; font-weight: 500; } td.number, th.number { text-align: right; }
tr:last-child td { border-bottom: 0; } .bad { color: var(--bad); }
svg { display: block; height: auto; min-width: 800px; width: 100%; }
svg text { fill: var(--ink); font: 12px system-ui, sans-serif; } svg .detail, svg .time { fill: var(--faint);
  font-size: 11px; } svg .time { text-anchor: middle; }
.ground { fill: var(--line); opacity: .35; } .mark { fill: none; stroke-width: 1.2; }
.mark.cluster { stroke: var(--cluster); } .mark.cue { stroke: var(--cue); } .mark.key { stroke: var(--ink); }
.rate { opacity: .85; } .c0 { fill: var(--c0); } .c1 { fill: var(--c1); } .c2 { fill: var(--c2); }
.c3 { fill: var(--c3); } .gap { fill: var(--bad); opacity: .45; } .lag { fill: var(--lag); opacity: .8; }
.tick { fill: none; stroke: var(--line); } .pointer { fill: transparent; } .pointer:hover { fill: var(--ink);
  opacity: .12; }
#bytes .cluster { fill: var(--c0); opacity: .55; } #bytes .head { fill: var(--c3); } #bytes .cues { fill: var(--cue); }
#bytes .damage { fill: var(--bad); }
.key-line { color: var(--faint); font-size: 13px; margin: 8px 0 0; } .key-line b { border-radius: 2px;
  display: inline-block; height: 10px; margin: 0 5px 0 14px; width: 10px; } .key-line b:first-child { margin-left: 0; }
.tree ul { list-style: none; margin: 0; padding-left: 22px; } .tree > ul { padding: 0; }
.tree li { line-height: 1.7; overflow-wrap: anywhere; } .tree summary { cursor: pointer; }
.tree .name { font-weight: 600; } .tree .value { color: var(--c2); margin-left: 8px; } .tree .more { color:
  var(--faint); font-style: italic; } .tree .bad, .tree .size { margin-left: 10px; } .tree .size, .tree .at {
  color: var(--faint); font-size: 13px; font-variant-numeric: tabular-nums; } .tree meter { height: 8px; margin: 0 8px;
  vertical-align: middle; width: 60px; }
.alarm { border-color: var(--bad); } footer { color: var(--faint); font-size: 13px; margin-top: 32px; }
</style>
)";

std::string Fact(const char* name, const std::string& value) {
    return std::string("<div><dt>") + name + "</dt><dd>" + value + "</dd></div>\n";
}

// Of what the file holds; what it says may be something else.
UINT64 EndOf(const FileFacts& facts) {
    UINT64 end = 0;
    for (const TrackReport& track : facts.tracks) {
        end = std::max(end, track.end);
    }
    return end;
}

std::string Summary(const FileFacts& facts) {
    const UINT64 end = EndOf(facts);
    std::string html = "<dl>\n" + Fact("size", "<span title=\"" + CountText(facts.bytes) + " bytes\">" +
                                                   BytesText(facts.bytes) + "</span>");
    html += Fact("length", TimeText(NsOf(facts, end)));
    html += Fact("bitrate", RateText(RateOf(facts, facts.bytes, end)));
    html += Fact("document type", Escaped(facts.docType));
    html += Fact("clusters", CountText(facts.clusters) + ", up to " + BytesText(facts.largestCluster));
    html += Fact("cue points",
                 CountText(facts.cuePoints) +
                     (facts.lostCuePoints == 0
                          ? ""
                          : " <span class=\"bad\">(" + CountText(facts.lostCuePoints) + " lead to no cluster)</span>"));
    constexpr double kMaxDurationTicks = 1e15; // more than any file has
    if (facts.durationTicks > 0 && facts.durationTicks < kMaxDurationTicks) {
        html += Fact("length it says", TimeText(NsOf(facts, static_cast<UINT64>(facts.durationTicks))));
    }
    html += facts.writingApp.empty() ? "" : Fact("written by", Escaped(facts.writingApp));
    html += facts.muxingApp.empty() ? "" : Fact("with", Escaped(facts.muxingApp));
    return html + "</dl>\n";
}

std::string Damages(const FileFacts& facts) {
    if (facts.damageCount == 0) {
        return "";
    }
    std::string html = "<h2>Damage</h2>\n<div id=\"damage\" class=\"panel alarm\"><ul>\n";
    for (const Damage& damage : facts.damages) {
        const std::string bytes = damage.to > damage.from
                                      ? "bytes " + CountText(damage.from) + " to " + CountText(damage.to) + " (" +
                                            BytesText(damage.to - damage.from) + ")"
                                      : "byte " + CountText(damage.from);
        html += "<li><span class=\"bad\">" + bytes + "</span>: " + Escaped(damage.what) + "</li>\n";
    }
    if (facts.damageCount > facts.damages.size()) {
        html += "<li>" + CountText(facts.damageCount - facts.damages.size()) + " more</li>\n";
    }
    return html + "</ul></div>\n";
}

std::string TableCell(const std::string& text, bool isNumber = false) {
    return std::string(isNumber ? "<td class=\"number\">" : "<td>") + text + "</td>";
}

std::string TrackRow(const FileFacts& facts, const TrackReport& track) {
    const UINT64 length = track.end - std::min(track.begin, track.end);
    std::string html = "<tr>" + TableCell(TrackTitle(track)) + TableCell(Escaped(track.codecId)) +
                       TableCell(Escaped(track.format)) + TableCell(Escaped(track.name)) +
                       TableCell(Escaped(track.language));
    html += TableCell(CountText(track.blocks), true) + TableCell(CountText(track.keyframes), true) +
            TableCell(BytesText(track.bytes), true) + TableCell(RateText(RateOf(facts, track.bytes, length)), true);
    html +=
        TableCell(track.gapCount == 0 ? "none" : "<span class=\"bad\">" + CountText(track.gapCount) + "</span>", true) +
        TableCell(TimeText(NsOf(facts, track.lag)), true);
    return html + "</tr>\n";
}

std::string Tracks(const FileFacts& facts) {
    constexpr size_t kMostRows = 200;
    std::string html = "<table id=\"tracks\"><tr><th>track</th><th>codec</th><th>format</th><th>name</th>"
                       "<th>language</th><th class=\"number\">blocks</th><th class=\"number\">keyframes</th>"
                       "<th class=\"number\">size</th><th class=\"number\">bitrate</th>"
                       "<th class=\"number\">gaps</th><th class=\"number\">behind others</th></tr>\n";
    for (size_t i = 0; i < std::min(facts.tracks.size(), kMostRows); ++i) {
        html += TrackRow(facts, facts.tracks[i]);
    }
    if (facts.tracks.size() > kMostRows) {
        html += "<tr><td>" + CountText(facts.tracks.size() - kMostRows) + " more</td></tr>\n";
    }
    return html + "</table>\n";
}

std::string Key(const char* colour, const char* text) {
    return std::string("<b style=\"background:var(--") + colour + ")\"></b>" + text;
}

} // namespace

std::string PageOf(const FileFacts& facts, const std::string& fileName) {
    const std::string name = Escaped(fileName);
    std::string html = "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
                       "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                       "style-src 'unsafe-inline'\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
                       name + "</title>\n" + kStyle + "</head><body>\n<h1>" + name + "</h1>\n";
    html += facts.title.empty() ? "" : "<p class=\"lead\" id=\"title\">" + Escaped(facts.title) + "</p>\n";
    html += "<h2>File</h2>\n<div class=\"panel\" id=\"summary\">" + Summary(facts) + "</div>\n" + Damages(facts);
    html += "<h2>Tracks</h2>\n<div class=\"panel\">" + Tracks(facts) + "</div>\n";
    html += "<h2>Over time</h2>\n<div class=\"panel\">" + TimelinePicture(facts) + "<p class=\"key-line\">" +
            Key("cluster", "a cluster begins") + Key("cue", "a cue point") + Key("ink", "a keyframe") +
            Key("bad", "nothing for some time") + Key("lag", "how far a block stands behind other tracks") +
            "</p></div>\n";
    html += "<h2>Over the file</h2>\n<div class=\"panel\">" + BytesPicture(facts) + "<p class=\"key-line\">" +
            Key("c0", "clusters") + Key("cue", "cues") + Key("c3", "everything else") + Key("bad", "damaged") +
            "</p></div>\n";
    html += "<h2>Elements</h2>\n<div class=\"panel tree\" id=\"elements\">" + TreeText(facts.tree, facts.bytes) +
            "</div>\n<footer>A report of mkvmux.</footer>\n</body></html>\n";
    return html;
}

} // namespace report
