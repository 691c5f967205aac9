#include "mkvmux/track_option_text.h"

#include <charconv>
#include <string_view>

#include "mkvmux/failure.h"
#include "mkvmux/language_choice.h"
#include "mkvmux/text.h"

namespace mkvmux {

namespace {

size_t ReadTrackNumber(const char* option, std::string_view text) {
    size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw Failure(std::string(option) + ": '" + std::string(text) + "' is no track number");
    }
    return number;
}

struct NumberAndText {
    size_t number;
    std::wstring text;
};

// The text may hold colons itself.
NumberAndText Split(const char* option, std::string_view argument) {
    const size_t colon = argument.find(':');
    if (colon == std::string_view::npos) {
        throw Failure(std::string(option) + ": '" + std::string(argument) + "' is not TRACK:NAME");
    }
    return {ReadTrackNumber(option, argument.substr(0, colon)), WideFromUtf8(argument.substr(colon + 1))};
}

std::wstring ReadLanguage(const std::wstring& text) {
    if (const auto language = FindLanguage(text)) {
        return *language;
    }
    std::string reason = "--language: there is no language '" + Utf8FromWide(text) + "'";
    const char* joint = "; do you mean ";
    for (const std::wstring& name : NearestLanguages(text)) {
        reason += joint + ("'" + Utf8FromWide(name) + "'");
        joint = ", ";
    }
    throw Failure(reason + "; --list-languages names them all");
}

} // namespace

std::map<size_t, TrackOptions> ReadTrackOptions(const RawTrackOptions& raw) {
    std::map<size_t, TrackOptions> tracks;
    for (const std::string& argument : raw.names) {
        auto [number, text] = Split("--track-name", argument);
        tracks[number].name = std::move(text);
    }
    for (const std::string& argument : raw.languages) {
        const auto [number, text] = Split("--language", argument);
        tracks[number].language = ReadLanguage(text);
    }
    for (const std::string& argument : raw.defaults) {
        tracks[ReadTrackNumber("--default", argument)].makeDefault = true;
    }
    for (const std::string& argument : raw.disabled) {
        tracks[ReadTrackNumber("--disable", argument)].disable = true;
    }
    return tracks;
}

} // namespace mkvmux
