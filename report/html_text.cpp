#include "report/html_text.h"

#include <cinttypes>
#include <cstdio>

#include "sources/base/printable.h"

namespace report {

namespace {

constexpr double kThousand = 1000;

// In the largest unit of which there is one.
std::string Scaled(double number, const char* const (&units)[5]) {
    size_t unit = 0;
    while (number >= kThousand && unit + 1 < std::size(units)) {
        number /= kThousand;
        ++unit;
    }
    return Fixed(number, unit == 0 ? 0 : 1) + " " + units[unit];
}

} // namespace

std::string Escaped(std::string_view text) {
    std::string safe;
    for (const char c : source::Printable(text)) {
        switch (c) {
        case '&':
            safe += "&amp;";
            break;
        case '<':
            safe += "&lt;";
            break;
        case '>':
            safe += "&gt;";
            break;
        case '"':
            safe += "&quot;";
            break;
        case '\'':
            safe += "&#39;";
            break;
        default:
            safe += c;
        }
    }
    return safe;
}

std::string BytesText(UINT64 bytes) {
    return Scaled(static_cast<double>(bytes), {"bytes", "kB", "MB", "GB", "TB"});
}

std::string CountText(UINT64 number) {
    std::string text = std::to_string(number);
    constexpr size_t kGroup = 3;
    for (size_t place = text.size(); place > kGroup; place -= kGroup) {
        text.insert(place - kGroup, "\u202f"); // a narrow space that does not break
    }
    return text;
}

std::string TimeText(UINT64 ns) {
    constexpr UINT64 kNsInMs = 1000000;
    constexpr UINT64 kMsInSecond = 1000;
    constexpr UINT64 kSixty = 60;
    const UINT64 ms = ns / kNsInMs;
    const UINT64 seconds = ms / kMsInSecond;
    char text[64];
    std::snprintf(text, sizeof(text), "%" PRIu64 ":%02" PRIu64 ":%02" PRIu64 ".%03" PRIu64,
                  static_cast<uint64_t>(seconds / (kSixty * kSixty)), static_cast<uint64_t>(seconds / kSixty % kSixty),
                  static_cast<uint64_t>(seconds % kSixty), static_cast<uint64_t>(ms % kMsInSecond));
    return text;
}

std::string RateText(double bitsPerSecond) {
    return Scaled(bitsPerSecond, {"bit/s", "kbit/s", "Mbit/s", "Gbit/s", "Tbit/s"});
}

std::string DateText(INT64 ns) {
    constexpr INT64 kNsPerSecond = 1000000000;
    constexpr INT64 kSecondsPerDay = 86400;
    constexpr INT64 kDaysBefore = 730791; // from 1 March of the year 0 to 1 January 2001
    const INT64 seconds = ns / kNsPerSecond - (ns % kNsPerSecond < 0 ? 1 : 0);
    const INT64 days = seconds / kSecondsPerDay - (seconds % kSecondsPerDay < 0 ? 1 : 0);
    const INT64 inDay = seconds - days * kSecondsPerDay;
    // Years begin in March, so that a leap day is their last.
    const INT64 day = days + kDaysBefore;
    const INT64 era = day / 146097; // 400 years; a date of 64 bits never lies before the first
    const INT64 ofEra = day - era * 146097;
    const INT64 yearOfEra = (ofEra - ofEra / 1460 + ofEra / 36524 - ofEra / 146096) / 365;
    const INT64 ofYear = ofEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const INT64 marchMonth = (5 * ofYear + 2) / 153;
    const INT64 month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
    const INT64 year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    char text[80];
    std::snprintf(text, sizeof(text),
                  "%04" PRId64 "-%02" PRId64 "-%02" PRId64 " %02" PRId64 ":%02" PRId64 ":%02" PRId64 " UTC",
                  static_cast<int64_t>(year), static_cast<int64_t>(month),
                  static_cast<int64_t>(ofYear - (153 * marchMonth + 2) / 5 + 1), static_cast<int64_t>(inDay / 3600),
                  static_cast<int64_t>(inDay / 60 % 60), static_cast<int64_t>(inDay % 60));
    return text;
}

std::string Fixed(double number, int digits) {
    char text[64];
    std::snprintf(text, sizeof(text), "%.*f", digits, number);
    return text;
}

} // namespace report
