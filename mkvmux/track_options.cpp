#include "mkvmux/track_options.h"

#include <charconv>
#include <string_view>

#include "mkvmux/failure.h"
#include "mkvmux/language_choice.h"
#include "mkvmux/option_kinds.h"
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

void TrackOptions::ApplyTo(client::TrackRow& row) const {
    if (name) {
        row.name = win::Bstr(*name);
    }
    if (language) {
        row.language = win::Bstr(*language);
    }
    row.isDefault = makeDefault ? 1 : row.isDefault;
    row.enabled = disable ? 0 : row.enabled;
}

TrackOptionParser::TrackOptionParser(CLI::App& app) {
    app.option_defaults()->group("Tracks, counted over all inputs from 0");
    AddRepeatable(app, "--track-name", m_names, "the name of track T; an empty one removes it", "T:NAME");
    AddRepeatable(app, "--language", m_languages, "the language of track T: its English name or its ISO 639 code",
                  "T:NAME");
    AddRepeatable(app, "--default", m_defaults, "set the default flag of track T", "T");
    AddRepeatable(app, "--disable", m_disabled, "do not write track T", "T");
}

std::map<size_t, TrackOptions> TrackOptionParser::Read() const {
    std::map<size_t, TrackOptions> tracks;
    for (const std::string& argument : m_names) {
        auto [number, text] = Split("--track-name", argument);
        tracks[number].name = std::move(text);
    }
    for (const std::string& argument : m_languages) {
        const auto [number, text] = Split("--language", argument);
        tracks[number].language = ReadLanguage(text);
    }
    for (const std::string& argument : m_defaults) {
        tracks[ReadTrackNumber("--default", argument)].makeDefault = true;
    }
    for (const std::string& argument : m_disabled) {
        tracks[ReadTrackNumber("--disable", argument)].disable = true;
    }
    return tracks;
}

} // namespace mkvmux
