#include "tests/support/layout_json.h"

#include "tests/support/checksum.h"
#include "tests/support/json_writer.h"

namespace test_support {

namespace {

void DescribeElements(JsonWriter& json, const std::vector<EbmlElement>& elements, unsigned level) {
    for (const EbmlElement& element : elements) {
        json.BeginObject();
        json.Text("name", element.Name());
        json.Number("id", element.id);
        json.Number("level", level);
        json.Number("offset", element.offset);
        json.Number("headSize", uint64_t{element.idLength} + element.sizeLength);
        json.Number("dataSize", element.dataSize);
        json.Flag("unknownSize", element.unknownSize);
        json.Flag("cut", element.cut);
        json.EndObject();
        DescribeElements(json, element.children, level + 1);
    }
}

void DescribeTrack(JsonWriter& json, const LayoutTrack& track) {
    json.BeginObject();
    json.Number("number", track.number);
    json.Number("uid", track.uid);
    json.Number("type", track.type);
    json.Text("codecId", track.codecId);
    json.OptionalText("language", track.language);
    json.OptionalText("trackName", track.name);
    json.OptionalNumber("flagDefault", track.flagDefault);
    json.OptionalNumber("flagForced", track.flagForced);
    json.OptionalNumber("flagLacing", track.flagLacing);
    json.OptionalNumber("defaultDurationNs", track.defaultDurationNs);
    json.OptionalNumber("codecPrivateSize", track.codecPrivateSize);
    json.OptionalNumber("codecDelayNs", track.codecDelayNs);
    json.EndObject();
}

void DescribeBlock(JsonWriter& json, const LayoutBlock& block, uint64_t scaleNs) {
    json.BeginObject();
    json.Number("offset", block.offset);
    json.Number("track", block.track);
    json.Real("timeNs", static_cast<double>(block.time) * static_cast<double>(scaleNs));
    json.Flag("simple", block.simple);
    json.Flag("keyframe", block.keyframe);
    json.OptionalNumber("durationTicks", block.duration);
    json.BeginArray("frameSizes");
    for (const ByteView frame : block.frames) {
        json.Number({}, frame.size());
    }
    json.EndArray();
    json.BeginArray("frameCrcs");
    for (const ByteView frame : block.frames) {
        json.Number({}, Crc32(frame));
    }
    json.EndArray();
    json.EndObject();
}

void DescribeClusters(JsonWriter& json, const MatroskaLayout& layout) {
    json.BeginArray("clusters");
    for (const LayoutCluster& cluster : layout.clusters) {
        json.BeginObject();
        json.Number("offset", cluster.offset);
        json.OptionalNumber("timestamp", cluster.timestamp);
        json.BeginArray("blocks");
        for (const LayoutBlock& block : cluster.blocks) {
            DescribeBlock(json, block, layout.timestampScaleNs);
        }
        json.EndArray();
        json.EndObject();
    }
    json.EndArray();
}

void DescribePositions(JsonWriter& json, const MatroskaLayout& layout) {
    const EbmlElement* const segment = layout.Segment();
    const uint64_t base = segment == nullptr ? 0 : segment->DataOffset();
    json.BeginArray("seekEntries");
    for (const LayoutSeekEntry& entry : layout.seekEntries) {
        json.BeginObject();
        json.Text("name", ElementName(entry.targetId));
        json.Number("offset", base + entry.position);
        json.EndObject();
    }
    json.EndArray();
    json.BeginArray("cues");
    for (const LayoutCue& cue : layout.cues) {
        json.BeginObject();
        json.Real("timeNs", static_cast<double>(cue.time) * static_cast<double>(layout.timestampScaleNs));
        json.Number("track", cue.track);
        json.Number("clusterOffset", base + cue.clusterPosition);
        json.OptionalNumber("relativePosition", cue.relativePosition);
        json.OptionalNumber("durationTicks", cue.duration);
        json.OptionalNumber("blockNumber", cue.blockNumber);
        json.EndObject();
    }
    json.EndArray();
}

void DescribeList(JsonWriter& json, const char* name, const std::vector<std::string>& lines) {
    json.BeginArray(name);
    for (const std::string& line : lines) {
        json.Text({}, line);
    }
    json.EndArray();
}

} // namespace

std::string DescribeAsJson(const MatroskaLayout& layout, const std::vector<std::string>& findings) {
    JsonWriter json;
    json.BeginObject();
    json.Number("size", layout.file.size());
    DescribeList(json, "findings", findings);
    DescribeList(json, "cuts", layout.cuts);
    json.Text("docType", layout.docType);
    json.Number("timestampScaleNs", layout.timestampScaleNs);
    if (layout.duration) {
        json.Real("durationNs", *layout.duration * static_cast<double>(layout.timestampScaleNs));
    }
    json.Text("muxingApp", layout.muxingApp);
    json.Text("writingApp", layout.writingApp);
    json.BeginArray("elements");
    DescribeElements(json, layout.tree.elements, 0);
    json.EndArray();
    json.BeginArray("tracks");
    for (const LayoutTrack& track : layout.tracks) {
        DescribeTrack(json, track);
    }
    json.EndArray();
    DescribePositions(json, layout);
    DescribeClusters(json, layout);
    json.EndObject();
    return json.Result() + "\n";
}

} // namespace test_support
