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

struct NumberAndFlag {
    size_t number;
    bool flag;
};

// "T", "T:1" or "T:0".
NumberAndFlag SplitFlag(const char* option, std::string_view argument) {
    const size_t colon = argument.find(':');
    const std::string_view value = colon == std::string_view::npos ? "1" : argument.substr(colon + 1);
    if (value != "0" && value != "1") {
        throw Failure(std::string(option) + ": '" + std::string(argument) + "' is not TRACK, TRACK:0 or TRACK:1");
    }
    return {ReadTrackNumber(option, argument.substr(0, colon)), value == "1"};
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

const std::array<TrackFlagOption, 5>& TrackFlagOptionTable() {
    static constexpr std::array<TrackFlagOption, 5> kTable{{
        {"--forced", "--forced,--forced-display-flag", "whether track T is shown to those who asked for no subtitles",
         &TrackFlagOptions::forced, &MuxTrackFlags::forced},
        {"--hearing-impaired", "--hearing-impaired,--hearing-impaired-flag",
         "whether track T is for people who do not hear well", &TrackFlagOptions::hearingImpaired,
         &MuxTrackFlags::hearingImpaired},
        {"--visual-impaired", "--visual-impaired,--visual-impaired-flag",
         "whether track T is for people who do not see well", &TrackFlagOptions::visualImpaired,
         &MuxTrackFlags::visualImpaired},
        {"--original", "--original,--original-flag", "whether track T is in the language of the original",
         &TrackFlagOptions::original, &MuxTrackFlags::original},
        {"--commentary", "--commentary,--commentary-flag", "whether track T is a commentary",
         &TrackFlagOptions::commentary, &MuxTrackFlags::commentary},
    }};
    return kTable;
}

void TrackFlagOptions::ApplyTo(MuxTrackFlags& record) const {
    for (const TrackFlagOption& option : TrackFlagOptionTable()) {
        if (const std::optional<bool>& flag = this->*option.flag) {
            record.*option.field = *flag ? MuxFlag_On : MuxFlag_Off;
        }
    }
}

bool TrackOptions::ChangesRow() const {
    return name || language || isDefault || disable;
}

void TrackOptions::ApplyTo(client::TrackRow& row) const {
    if (name) {
        row.name = win::Bstr(*name);
    }
    if (language) {
        row.language = win::Bstr(*language);
    }
    if (isDefault) {
        row.isDefault = *isDefault ? 1 : 0;
    }
    row.enabled = disable ? 0 : row.enabled;
}

TrackOptionParser::TrackOptionParser(CLI::App& app) {
    app.option_defaults()->group("Tracks, counted over all inputs from 0");
    AddRepeatable(app, "--track-name", m_names, "the name of track T; an empty one removes it", "T:NAME");
    AddRepeatable(app, "--language", m_languages, "the language of track T: its English name or its ISO 639 code",
                  "T:NAME");
    AddRepeatable(app, "--default,--default-track-flag", m_defaults, "the default flag of track T", "T[:0|1]");
    AddRepeatable(app, "--disable", m_disabled, "do not write track T", "T");
    for (size_t i = 0; i < m_flags.size(); ++i) {
        const TrackFlagOption& option = TrackFlagOptionTable()[i];
        AddRepeatable(app, option.names, m_flags[i], option.help, "T[:0|1]");
    }
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
        const auto [number, flag] = SplitFlag("--default", argument);
        tracks[number].isDefault = flag;
    }
    for (size_t i = 0; i < m_flags.size(); ++i) {
        const TrackFlagOption& option = TrackFlagOptionTable()[i];
        for (const std::string& argument : m_flags[i]) {
            const auto [number, flag] = SplitFlag(option.name, argument);
            tracks[number].flags.*option.flag = flag;
        }
    }
    for (const std::string& argument : m_disabled) {
        tracks[ReadTrackNumber("--disable", argument)].disable = true;
    }
    return tracks;
}

} // namespace mkvmux
