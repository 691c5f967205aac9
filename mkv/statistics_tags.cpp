#include "mkv/statistics_tags.h"

#include <cinttypes>
#include <cstdio>

#include "mkv/element_values.h"

namespace mkv {

namespace {

constexpr const char* kCountedNames = "BPS DURATION NUMBER_OF_FRAMES NUMBER_OF_BYTES";

// With all nine digits behind the second.
std::string DurationText(UINT64 durationNs) {
    constexpr UINT64 kNsInSecond = 1000000000;
    constexpr UINT64 kSecondsInMinute = 60;
    constexpr UINT64 kMinutesInHour = 60;
    const UINT64 seconds = durationNs / kNsInSecond;
    const UINT64 minutes = seconds / kSecondsInMinute;
    char text[64];
    std::snprintf(text, sizeof(text), "%02" PRIu64 ":%02" PRIu64 ":%02" PRIu64 ".%09" PRIu64,
                  static_cast<uint64_t>(minutes / kMinutesInHour), static_cast<uint64_t>(minutes % kMinutesInHour),
                  static_cast<uint64_t>(seconds % kSecondsInMinute), static_cast<uint64_t>(durationNs % kNsInSecond));
    return text;
}

void AddText(libmatroska::KaxTag& tag, const char* name, const std::string& text) {
    auto& simple = libebml::AddNewChild<libmatroska::KaxTagSimple>(tag);
    SetUtf8Child<libmatroska::KaxTagName>(simple, name);
    SetUtf8Child<libmatroska::KaxTagString>(simple, text);
}

} // namespace

void AddStatisticsTag(libmatroska::KaxTags& tags, const CTrackStatistics::Track& track, const FileOrigin& origin) {
    auto& tag = libebml::AddNewChild<libmatroska::KaxTag>(tags);
    SetChild<libmatroska::KaxTagTrackUID>(libebml::GetChild<libmatroska::KaxTagTargets>(tag), track.uid);
    AddText(tag, "BPS", std::to_string(track.bitsPerSecond()));
    AddText(tag, "DURATION", DurationText(track.durationNs()));
    AddText(tag, "NUMBER_OF_FRAMES", std::to_string(track.blocks));
    AddText(tag, "NUMBER_OF_BYTES", std::to_string(track.bytes));
    AddText(tag, "_STATISTICS_WRITING_APP", origin.writingApp);
    AddText(tag, "_STATISTICS_WRITING_DATE_UTC", DateText(origin.startedS));
    AddText(tag, "_STATISTICS_TAGS", kCountedNames);
}

} // namespace mkv
