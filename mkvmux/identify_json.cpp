#include "mkvmux/identify_json.h"

#include <nlohmann/json.hpp>

#include "mkvmux/media_type_facts.h"
#include "mkvmux/text.h"
#include "mkvmux/written_codec.h"

namespace mkvmux {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kIndent = 2;

void AddFacts(Json& track, const AM_MEDIA_TYPE& type) {
    const MediaTypeFacts facts = FactsOf(type);
    track["type"] = facts.kind;
    track["subtype"] = facts.subtype;
    if (facts.picture) {
        track["width"] = facts.picture->width;
        track["height"] = facts.picture->height;
        track["frames_per_second"] = facts.picture->framesPerSecond;
    }
    if (facts.sound) {
        track["sampling_frequency"] = facts.sound->samplesPerSecond;
        track["channels"] = facts.sound->channels;
        track["bits_per_sample"] = facts.sound->bitsPerSample;
    }
}

// What the input does not say is not there.
void AddFlag(Json& track, const char* name, const std::optional<bool>& flag) {
    if (flag) {
        track[name] = *flag;
    }
}

Json TrackOf(const SourceStream& stream, bool isStrict) {
    Json track;
    track["number"] = stream.number;
    track["pin"] = Shown(stream.pinName);
    track["codec_id"] = nullptr; // the muxer cannot write it
    if (stream.HasType()) {
        AddFacts(track, stream.type);
        if (std::string codec = WrittenCodecId(stream.type, isStrict); !codec.empty()) {
            track["codec_id"] = std::move(codec);
        }
    }
    if (stream.tags) {
        track["name"] = Shown(stream.tags->name);
        track["language"] = Utf8FromWide(stream.tags->language);
        track["default"] = stream.tags->isDefault;
        track["forced"] = stream.tags->isForced;
        track["enabled"] = stream.tags->isEnabled;
        AddFlag(track, "hearing_impaired", stream.tags->hearingImpaired);
        AddFlag(track, "visual_impaired", stream.tags->visualImpaired);
        AddFlag(track, "original", stream.tags->original);
        AddFlag(track, "commentary", stream.tags->commentary);
    }
    return track;
}

} // namespace

std::string IdentificationAsJson(const std::vector<IdentifiedInput>& inputs, bool isStrict) {
    Json document;
    document["inputs"] = Json::array();
    for (const IdentifiedInput& input : inputs) {
        Json tracks = Json::array();
        for (const SourceStream& stream : input.streams) {
            tracks.push_back(TrackOf(stream, isStrict));
        }
        document["inputs"].push_back({{"file", Utf8FromWide(input.path)}, {"tracks", std::move(tracks)}});
    }
    return document.dump(kIndent, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace mkvmux
