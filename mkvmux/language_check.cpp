#include "mkvmux/language_check.h"

#include <string>

#include "mkvmux/language_spelling.h"
#include "mkvmux/text.h"

namespace mkvmux {

namespace {

// The language as the muxer finds it, respelt if need be; as it is when the list does not have it.
std::wstring Respelt(size_t input, const std::wstring& language, MuxerSettings& settings) {
    const auto spelling = CodeWrittenFor(language).empty() ? SpellingForMuxer(language) : std::nullopt;
    TrackOptions change;
    change.language = spelling;
    return spelling && settings.ChangeTrack(input, change) ? *spelling : language;
}

// Empty when readers will know the language.
std::string DoubtAbout(const std::wstring& language, bool isStrict) {
    const std::string code = CodeWrittenFor(language);
    if (code.empty()) {
        return "the language '" + Shown(language) + "' is not in the list and is written " +
               (isStrict ? "as unknown" : "empty");
    }
    // A strict file has one of the two codes.
    if (!isStrict && code.find('/') != std::string::npos) {
        return "the language is written as '" + code + "', which readers take for an unknown one";
    }
    return {};
}

} // namespace

void CheckLanguages(const MuxGraph& graph, MuxerSettings& settings, Console& console) {
    for (size_t input = 0; input < graph.Streams().size(); ++input) {
        const auto language = settings.LanguageOf(input);
        if (!language || !settings.IsEnabled(input)) {
            continue;
        }
        if (const std::string doubt = DoubtAbout(Respelt(input, *language, settings), settings.IsStrict());
            !doubt.empty()) {
            console.Warn("track " + std::to_string(graph.Streams()[input].number) + ": " + doubt);
        }
    }
}

} // namespace mkvmux
