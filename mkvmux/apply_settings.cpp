#include "mkvmux/apply_settings.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "mkvmux/failure.h"
#include "mkvmux/file_bytes.h"
#include "mkvmux/language_choice.h"
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

// A compatible file has default tracks as forced ones too. Players show forced subtitles to everybody, so those that
// were not forced are not made so.
bool CarriesDefault(const SourceStream& stream) {
    const GUID& kind = stream.type.majortype;
    const bool isPlain = kind == MEDIATYPE_Video || kind == MEDIATYPE_Audio;
    return stream.tags->isDefault && (isPlain || stream.tags->isForced);
}

// Where the rows begin without the flag, only a flag that is set need be carried over.
void CarryDefaultOnly(const SourceStream& stream, TrackOptions& change) {
    if (!change.isDefault && CarriesDefault(stream)) {
        change.isDefault = true;
    }
}

// A strict file has a place for each flag.
void CarryEachFlag(const StreamTags& tags, TrackOptions& change) {
    change.isDefault = change.isDefault.value_or(tags.isDefault);
    change.flags.forced = change.flags.forced.value_or(tags.isForced);
    const auto carry = [](std::optional<bool>& flag, const std::optional<bool>& said) { flag = flag ? flag : said; };
    carry(change.flags.hearingImpaired, tags.hearingImpaired);
    carry(change.flags.visualImpaired, tags.visualImpaired);
    carry(change.flags.original, tags.original);
    carry(change.flags.commentary, tags.commentary);
}

// What the input says is the default of what the user says. A saved configuration has said it all already.
TrackOptions ChangeOf(const SourceStream& stream, const Options& options, bool isStrict) {
    const auto given = options.tracks.find(stream.number);
    TrackOptions change = given != options.tracks.end() ? given->second : TrackOptions();
    if (stream.tags && options.loadConfig.empty()) {
        change.name = change.name.value_or(stream.tags->name);
        change.language = change.language.value_or(stream.tags->language);
        if (isStrict) {
            CarryEachFlag(*stream.tags, change);
        } else {
            CarryDefaultOnly(stream, change);
        }
    }
    return change;
}

// A row begins with English, whatever the input is. What nobody said of a strict file's track is unknown.
void LeaveLanguageUnknown(size_t input, const MuxerSettings& settings, TrackOptions& change) {
    if (!change.language && settings.LanguageOf(input)) {
        change.language = kUndeterminedLanguage;
    }
}

std::vector<TrackOptions> ChangesOf(const MuxGraph& graph, const Options& options, const MuxerSettings& settings) {
    std::vector<TrackOptions> changes;
    for (const SourceStream& stream : graph.Streams()) {
        changes.push_back(ChangeOf(stream, options, settings.IsStrict()));
        if (settings.IsStrict() && options.loadConfig.empty()) {
            LeaveLanguageUnknown(changes.size() - 1, settings, changes.back());
        }
    }
    return changes;
}

// False when the muxer has no settings for that input.
bool ChangeTrack(size_t input, const TrackOptions& change, MuxerSettings& settings) {
    const bool isRowDone = !change.ChangesRow() || settings.ChangeTrack(input, change);
    const bool areFlagsDone = change.flags == TrackFlagOptions() || settings.ChangeFlags(input, change.flags);
    return isRowDone && areFlagsDone;
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
    std::vector<TrackOptions> changes = ChangesOf(graph, options, settings);
    SpellLanguages(changes);
    bool anyEnabled = false;
    for (size_t input = 0; input < graph.Streams().size(); ++input) {
        const SourceStream& stream = graph.Streams()[input];
        const TrackOptions& change = changes[input];
        if (!ChangeTrack(input, change, settings)) {
            console.Warn(TrackText(stream.number) + ": the muxer has no settings for input " + std::to_string(input) +
                         "; what was said of the track is ignored");
        }
        if (stream.tags && (!stream.tags->colour.IsEmpty() || !stream.tags->dolbyVision.empty())) {
            settings.TellColour(input, stream.tags->colour, stream.tags->dolbyVision);
        }
        anyEnabled = anyEnabled || settings.IsEnabled(input);
    }
    if (!anyEnabled) {
        throw Failure("every track is disabled: nothing is left to write");
    }
}

void ApplyTitle(const MuxGraph& graph, const Options& options, MuxerSettings& settings, Console& console) {
    if (options.title) {
        if (!settings.UseTitle(*options.title)) {
            throw Failure("--title: the muxer refuses the title: it is too long");
        }
    } else if (settings.IsStrict() && options.loadConfig.empty() && !graph.InputTitle().empty() &&
               !settings.UseTitle(graph.InputTitle())) {
        console.Warn("the title of the inputs is too long and left out");
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
