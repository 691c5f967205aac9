#include "mkvmux/apply_settings.h"

#include <filesystem>
#include <optional>
#include <span>
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
    const auto given = options.tracks.find(stream.number);
    TrackOptions change = given != options.tracks.end() ? given->second : TrackOptions();
    if (stream.tags && options.loadConfig.empty()) {
        change.name = change.name.value_or(stream.tags->name);
        change.language = change.language.value_or(stream.tags->language);
        change.makeDefault = change.makeDefault || CarriesDefault(stream);
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

std::string ReadAttachedFile(const std::wstring& path) {
    std::string bytes = ReadWholeFile(path, kMaxAttachmentBytes);
    if (bytes.empty()) {
        throw Failure(Utf8FromWide(path) + ": is empty and cannot be attached");
    }
    return bytes;
}

// What is empty would be an empty element: it is left out of the file instead.
template <typename Text>
std::optional<Text> UnlessEmpty(const Text& text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

std::span<const BYTE> BytesOf(const std::string& data) {
    return {reinterpret_cast<const BYTE*>(data.data()), data.size()};
}

// Whole: readers drop an attachment that has no data, no name or no type.
client::Attachment AttachmentOf(const AttachmentOptions& file, const std::string& bytes) {
    client::Attachment attachment;
    attachment.fileName = UnlessEmpty(file.name.value_or(std::wstring()));
    if (!attachment.fileName) {
        attachment.fileName = UnlessEmpty(std::filesystem::path(file.path).filename().native());
    }
    attachment.description = UnlessEmpty(file.description);
    attachment.mimeType = UnlessEmpty(file.mimeType.value_or(std::string()));
    if (!attachment.mimeType) {
        attachment.mimeType = MimeTypeOf(file.path);
    }
    attachment.data = BytesOf(bytes);
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
        if (change != TrackOptions() && !settings.ChangeTrack(input, change)) {
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
        settings.Attach({UnlessEmpty(WideFromUtf8(carried.fileName)), UnlessEmpty(WideFromUtf8(carried.description)),
                         UnlessEmpty(carried.mimeType), std::span<const BYTE>(carried.data), carried.uid});
    }
}

void AttachFiles(const Options& options, MuxerSettings& settings) {
    for (const AttachmentOptions& file : options.attachments) {
        const std::string bytes = ReadAttachedFile(file.path);
        settings.Attach(AttachmentOf(file, bytes));
    }
}

} // namespace mkvmux
