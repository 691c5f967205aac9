#include "mkvmux/profile_checks.h"

#include <algorithm>
#include <string>
#include <vector>

#include "media/codec_description.h"
#include "media/webm_subset.h"
#include "mkvmux/failure.h"

namespace mkvmux {

namespace {

constexpr const char* kWayOut = "; write a .mkv file, or use --profile compatible";

// As the user wrote them, but for the names that other programs have for them.
std::vector<std::string> StrictOptionsIn(const Options& options) {
    std::vector<std::string> names;
    if (options.title) {
        names.emplace_back("--title");
    }
    if (!options.trackStatistics) {
        names.emplace_back("--disable-track-statistics-tags");
    }
    for (const TrackFlagOption& option : TrackFlagOptionTable()) {
        const auto says = [&option](const auto& track) { return (track.second.flags.*option.flag).has_value(); };
        if (std::any_of(options.tracks.begin(), options.tracks.end(), says)) {
            names.emplace_back(option.name);
        }
    }
    if (!options.chapters.chapters.empty()) {
        names.emplace_back("--chapters");
    }
    if (!options.chapters.globalTags.empty()) {
        names.emplace_back("--global-tags");
    }
    if (options.cuesInFront.value_or(false)) {
        names.emplace_back(options.indexBytes ? "--reserve-index-space" : "--cues");
    }
    if (options.seed) {
        names.emplace_back("--deterministic");
    }
    return names;
}

} // namespace

void WarnOfOptionsWithoutEffect(const Options& options, const MuxerSettings& settings, Console& console) {
    const std::vector<std::string> names = StrictOptionsIn(options);
    if (names.empty() || settings.IsStrict()) {
        return;
    }
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    console.Warn(text + ": no effect with the compatible profile");
}

void CheckWebmSubset(const MuxGraph& graph, const MuxerSettings& settings) {
    if (!settings.IsStrict() || !settings.IsWebm()) {
        return;
    }
    for (size_t input = 0; input < graph.Streams().size(); ++input) {
        const SourceStream& stream = graph.Streams()[input];
        const std::string codec = media::StrictCodecIdOf(stream.type);
        if (settings.IsEnabled(input) && !media::IsInWebmSubset(codec)) {
            throw Failure("track " + std::to_string(stream.number) + " (" + codec + ") cannot go into a WebM file" +
                          kWayOut);
        }
    }
    if (settings.HasAttached()) {
        throw Failure(std::string("attachments cannot go into a WebM file") + kWayOut);
    }
}

} // namespace mkvmux
