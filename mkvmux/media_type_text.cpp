#include "mkvmux/media_type_text.h"

#include <array>
#include <cstdio>

#include "mkvmux/media_type_facts.h"

namespace mkvmux {

namespace {

constexpr size_t kMaxTextChars = 96;

template <typename... Arguments>
std::string Format(const char* format, Arguments... arguments) {
    std::array<char, kMaxTextChars> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, arguments...);
    return buffer.data();
}

std::string Describe(const PictureFacts& picture) {
    const std::string text = Format(", %ldx%ld", picture.width, picture.height);
    return picture.framesPerSecond > 0 ? text + Format(", %.3g fps", picture.framesPerSecond) : text;
}

std::string Describe(const SoundFacts& sound) {
    const std::string text =
        Format(", %lu Hz, %u channel%s", sound.samplesPerSecond, sound.channels, sound.channels == 1 ? "" : "s");
    return sound.bitsPerSample == 0 ? text : text + Format(", %u bits", sound.bitsPerSample);
}

} // namespace

std::string DescribeMediaType(const AM_MEDIA_TYPE& type) {
    const MediaTypeFacts facts = FactsOf(type);
    return facts.kind + " " + facts.subtype + (facts.picture ? Describe(*facts.picture) : "") +
           (facts.sound ? Describe(*facts.sound) : "");
}

} // namespace mkvmux
