#include "mkv/file_origin.h"

#include <chrono>
#include <cstdio>
#include <ctime>

#include <ebml/EbmlVersion.h>
#include <matroska/KaxVersion.h>

#include "win/module_version.h"

namespace mkv {

namespace {

constexpr INT64 kMatroskaEpochS = 978307200; // 2001-01-01, 00:00:00

// Not the clock of <chrono>: it brings the whole threads library of the toolchain into the module.
INT64 NowS() {
    return static_cast<INT64>(std::time(nullptr));
}

std::string WithoutBlankEnd(std::string text) {
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

} // namespace

FileOrigin OriginNow(UINT64 seed) {
    return {"libebml v" + libebml::EbmlCodeVersion + " + libmatroska v" + libmatroska::KaxCodeVersion,
            WithoutBlankEnd(kWritingAppPrefix + win::ModuleVersionText()), seed == 0 ? NowS() : kMatroskaEpochS};
}

std::string DateText(INT64 secondsSince1970) {
    using namespace std::chrono;
    const sys_seconds time{seconds(secondsSince1970)};
    const sys_days day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    char text[32];
    std::snprintf(text, sizeof(text), "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text;
}

} // namespace mkv
