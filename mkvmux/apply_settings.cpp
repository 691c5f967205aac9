#include "mkvmux/apply_settings.h"

#include <filesystem>
#include <string>

#include "mkvmux/failure.h"
#include "mkvmux/file_bytes.h"
#include "mkvmux/language_spelling.h"
#include "mkvmux/mime_types.h"
#include "mkvmux/text.h"

namespace mkvmux {

namespace {

// The muxer takes less than 2 GiB.
constexpr UINT64 kMaxAttachmentBytes = 0x7FFFFFFE;

std::string TrackText(size_t number) {
    return "track " + std::to_string(number);
}

// The muxer writes default tracks as forced ones too. Players show forced subtitles to everybody, so those that were
// not forced are not made so.
bool CarriesDefault(const SourceStream& stream) {
    const GUID& kind = stream.type.majortype;
    const bool isPlain = kind == MEDIATYPE_Video || kind == MEDIATYPE_Audio;
    return stream.tags->isDefault && (isPlain || stream.tags->isForced);
}

// What the input says is the default of what the user says. A saved configuration has said it all already.
TrackOptions ChangeOf(const SourceStream& stream, const Options& options) {
    TrackOptions change;
    if (stream.tags && options.loadConfig.empty()) {
        change.name = stream.tags->name;
        change.language = stream.tags->language;
        change.makeDefault = CarriesDefault(stream);
    }
    if (const auto given = options.tracks.find(stream.number); given != options.tracks.end()) {
        const TrackOptions& user = given->second;
        change.name = user.name ? user.name : change.name;
        change.language = user.language ? user.language : change.language;
        change.makeDefault = user.makeDefault || change.makeDefault;
        change.disable = user.disable;
    }
    return change;
}

void WarnOfTracksThatAreNotThere(const MuxGraph& graph, const Options& options, Console& console) {
    for (const auto& [number, track] : options.tracks) {
        if (number >= graph.StreamCount()) {
            console.Warn("there is no " + TrackText(number) + ": the inputs have " +
                         std::to_string(graph.StreamCount()) + " (the first is track 0)");
        }
    }
}

// Whole: readers drop an attachment that has no data, no name or no type.
Attachment Load(const AttachmentOptions& file) {
    Attachment attachment;
    attachment.bytes = ReadWholeFile(file.path, kMaxAttachmentBytes);
    if (attachment.bytes.empty()) {
        throw Failure(Utf8FromWide(file.path) + ": is empty and cannot be attached");
    }
    attachment.mimeType = file.mimeType.value_or(std::string());
    if (attachment.mimeType.empty()) {
        attachment.mimeType = MimeTypeOf(file.path);
    }
    attachment.name = file.name.value_or(std::wstring());
    if (attachment.name.empty()) {
        attachment.name = std::filesystem::path(file.path).filename().native();
    }
    attachment.description = file.description;
    return attachment;
}

// The muxer reads a language in the code page of the thread that starts the run, which is this one.
void SpellLanguages(std::vector<TrackOptions>& changes) {
    for (TrackOptions& change : changes) {
        if (!change.language) {
            continue;
        }
        const auto spelling = SpellingForMuxer(*change.language);
        if (!spelling) {
            throw Failure("the language '" + Utf8FromWide(*change.language) +
                          "' has no letters in the code page of this system that the muxer would find it by");
        }
        change.language = spelling;
    }
}

bool SaysAnything(const TrackOptions& change) {
    return change.name || change.language || change.makeDefault || change.disable;
}

} // namespace

void ApplyTrackSettings(const MuxGraph& graph, const Options& options, MuxerSettings& settings, Console& console) {
    for (const std::string& warning : graph.InputWarnings()) {
        console.Warn(warning);
    }
    WarnOfTracksThatAreNotThere(graph, options, console);
    std::vector<TrackOptions> changes;
    for (const SourceStream& stream : graph.Streams()) {
        changes.push_back(ChangeOf(stream, options));
    }
    SpellLanguages(changes);
    bool anyEnabled = false;
    for (size_t input = 0; input < graph.Streams().size(); ++input) {
        const SourceStream& stream = graph.Streams()[input];
        const TrackOptions& change = changes[input];
        if (SaysAnything(change) && !settings.ChangeTrack(input, change)) {
            console.Warn(TrackText(stream.number) + ": the muxer has no settings for input " + std::to_string(input) +
                         "; what was said of the track is ignored");
        }
        anyEnabled = anyEnabled || settings.IsEnabled(input);
    }
    if (!anyEnabled) {
        throw Failure("every track is disabled: nothing is left to write");
    }
}

void CarryAttachments(const MuxGraph& graph, const Options& options, MuxerSettings& settings) {
    if (!options.loadConfig.empty()) {
        return; // it has its own
    }
    for (const source::Attachment& carried : graph.Attachments()) {
        settings.Attach({WideFromUtf8(carried.fileName), WideFromUtf8(carried.description), carried.mimeType,
                         std::string(carried.data.begin(), carried.data.end()), carried.uid});
    }
}

void AttachFiles(const Options& options, MuxerSettings& settings) {
    for (const AttachmentOptions& file : options.attachments) {
        settings.Attach(Load(file));
    }
}

} // namespace mkvmux
