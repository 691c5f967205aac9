#include "mkvmux/split_options.h"

#include <algorithm>
#include <charconv>
#include <cwctype>
#include <limits>
#include <map>
#include <optional>
#include <string_view>

#include "dshow/ref_time.h"
#include "mkvmux/failure.h"

namespace mkvmux {

namespace {

constexpr UINT64 kSecondsOfMinute = 60;
constexpr UINT64 kMostUnits = std::numeric_limits<INT64>::max() / 4;
constexpr size_t kMaxFractionDigits = 9;
constexpr size_t kMaxNumberWidth = 9;
constexpr size_t kUsualWidth = 3;

std::optional<UINT64> NumberOf(std::string_view digits) {
    UINT64 number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    return error == std::errc() && stop == end && !digits.empty() ? std::optional(number) : std::nullopt;
}

// None for what is too large.
std::optional<UINT64> Times(UINT64 number, UINT64 factor) {
    return number > kMostUnits / factor ? std::nullopt : std::optional(number * factor);
}

// "5" of "1.5" is half a second; up to nanoseconds.
std::optional<UINT64> FractionOf(std::string_view digits) {
    if (digits.size() > kMaxFractionDigits || !NumberOf(digits)) {
        return std::nullopt;
    }
    std::string padded(digits);
    padded.resize(kMaxFractionDigits, '0');
    return *NumberOf(padded) / static_cast<UINT64>(kNsPerReferenceTime);
}

// "HH:MM:SS", "MM:SS", each with a fraction.
std::optional<UINT64> ClockTimeOf(std::string_view text) {
    const size_t point = text.find('.');
    const std::optional<UINT64> fraction =
        point == std::string_view::npos ? std::optional<UINT64>(0) : FractionOf(text.substr(point + 1));
    std::string_view clock = text.substr(0, point);
    UINT64 seconds = 0;
    for (int fields = 1;; ++fields) {
        const size_t colon = clock.find(':');
        const std::optional<UINT64> field = NumberOf(clock.substr(0, colon));
        const bool isFirst = fields == 1;
        const std::optional<UINT64> before = Times(seconds, kSecondsOfMinute);
        if (!field || !before || (!isFirst && *field >= kSecondsOfMinute) || *field > kMostUnits) {
            return std::nullopt;
        }
        seconds = *before + *field;
        if (colon == std::string_view::npos) {
            const std::optional<UINT64> units = Times(seconds, static_cast<UINT64>(kReferenceTimesPerSecond));
            const bool isClock = fields == 2 || fields == 3;
            return isClock && units && fraction ? std::optional(*units + *fraction) : std::nullopt;
        }
        clock.remove_prefix(colon + 1);
    }
}

// "90s", "1500ms", "2m", "1h".
std::optional<UINT64> CountedTimeOf(std::string_view text) {
    static const std::map<std::string_view, UINT64> kUnits{
        {"ms", 10'000}, {"s", 10'000'000}, {"m", 600'000'000}, {"min", 600'000'000}, {"h", 36'000'000'000}};
    const size_t unit = text.find_first_not_of("0123456789");
    const auto found = unit == std::string_view::npos ? kUnits.end() : kUnits.find(text.substr(unit));
    const std::optional<UINT64> number = NumberOf(text.substr(0, unit));
    return found == kUnits.end() || !number ? std::nullopt : Times(*number, found->second);
}

std::optional<INT64> TimeOf(std::string_view text) {
    const std::optional<UINT64> clock = ClockTimeOf(text);
    const std::optional<UINT64> units = clock ? clock : CountedTimeOf(text);
    return units && *units > 0 ? std::optional(static_cast<INT64>(*units)) : std::nullopt;
}

// "700M": K, M and G are powers of 1024.
std::optional<UINT64> SizeOf(std::string_view text) {
    static constexpr std::string_view kLetters = "kmg";
    UINT64 factor = 1;
    if (!text.empty()) {
        const auto letter = static_cast<char>(std::tolower(static_cast<unsigned char>(text.back())));
        if (const size_t power = kLetters.find(letter); power != std::string_view::npos) {
            factor = UINT64{1} << (10 * (power + 1));
            text.remove_suffix(1);
        }
    }
    const std::optional<UINT64> number = NumberOf(text);
    return number && *number > 0 ? Times(*number, factor) : std::nullopt;
}

[[noreturn]] void Refuse(std::string_view text, const char* why) {
    throw Failure("--split: '" + std::string(text) + "' " + why);
}

INT64 ReadTime(std::string_view text) {
    const std::optional<INT64> time = TimeOf(text);
    if (!time) {
        Refuse(text, "is no time, such as 00:10:00, 00:00:01.5 or 90s");
    }
    return *time;
}

UINT64 ReadSize(std::string_view text) {
    const std::optional<UINT64> size = SizeOf(text);
    if (!size) {
        Refuse(text, "is no size, such as 700M, 2G or 1000000");
    }
    return *size;
}

std::vector<INT64> ReadTimes(std::string_view text) {
    std::vector<INT64> times;
    for (;;) {
        const size_t comma = text.find(',');
        times.push_back(ReadTime(text.substr(0, comma)));
        if (times.size() > 1 && times[times.size() - 2] >= times.back()) {
            Refuse(text.substr(0, comma), "is not later than the time before it");
        }
        if (comma == std::string_view::npos) {
            return times;
        }
        text.remove_prefix(comma + 1);
    }
}

// Where the number stands in a name: from the % to the d, and how many digits it has at least.
struct NumberPlace {
    size_t begin;
    size_t end;
    size_t width;
};

std::optional<NumberPlace> PlaceIn(std::wstring_view name) {
    for (size_t begin = name.find(L'%'); begin != std::wstring_view::npos; begin = name.find(L'%', begin + 1)) {
        size_t width = 0;
        size_t end = begin + 1;
        while (end < name.size() && name[end] >= L'0' && name[end] <= L'9' && width <= kMaxNumberWidth) {
            width = width * 10 + static_cast<size_t>(name[end++] - L'0');
        }
        if (end < name.size() && name[end] == L'd' && width <= kMaxNumberWidth) {
            return NumberPlace{begin, end + 1, width};
        }
    }
    return std::nullopt;
}

std::wstring Digits(UINT32 number, size_t width) {
    const std::wstring digits = std::to_wstring(number);
    return std::wstring(width > digits.size() ? width - digits.size() : 0, L'0') + digits;
}

} // namespace

SplitOptions ReadSplit(const std::string& text) {
    SplitOptions split;
    if (text.empty()) {
        return split;
    }
    const size_t colon = text.find(':');
    const std::string word = text.substr(0, colon);
    const std::string rest = colon == std::string::npos ? std::string() : text.substr(colon + 1);
    if (word == "duration") {
        split = {SplitOptions::Kind::Duration, ReadTime(rest), 0, {}};
    } else if (word == "size") {
        split = {SplitOptions::Kind::Size, 0, ReadSize(rest), {}};
    } else if (word == "timestamps" || word == "timecodes") {
        split = {SplitOptions::Kind::Timestamps, 0, 0, ReadTimes(rest)};
    } else if (const auto size = SizeOf(text)) {
        split = {SplitOptions::Kind::Size, 0, *size, {}};
    } else if (const auto time = TimeOf(text)) {
        split = {SplitOptions::Kind::Duration, *time, 0, {}};
    } else {
        Refuse(text, "is not duration:TIME, size:SIZE or timestamps:TIME,TIME...");
    }
    return split;
}

std::wstring PartName(const std::wstring& output, UINT32 number) {
    const size_t slash = output.find_last_of(L"/\\");
    const size_t nameBegin = slash == std::wstring::npos ? 0 : slash + 1;
    const std::wstring folder = output.substr(0, nameBegin);
    const std::wstring name = output.substr(nameBegin);
    if (const auto place = PlaceIn(name)) {
        return folder + name.substr(0, place->begin) + Digits(number, place->width) + name.substr(place->end);
    }
    const size_t point = std::min(name.rfind(L'.'), name.size());
    return folder + name.substr(0, point) + L"-" + Digits(number, kUsualWidth) + name.substr(point);
}

} // namespace mkvmux
