#include "sources/chapters/clock_time.h"

#include <algorithm>
#include <charconv>

#include "sources/base/limits.h"

namespace chapters {

namespace {

constexpr INT64 kUnitsInSecond = 10000000;
constexpr INT64 kSecondsInMinute = 60;
constexpr size_t kMaxDigits = 11; // whole parts fit 64 bits many times over

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// At least one digit.
std::optional<INT64> TakeNumber(std::string_view& text) {
    const auto end = std::find_if_not(text.begin(), text.end(), IsDigit);
    const auto digits = static_cast<size_t>(end - text.begin());
    if (digits == 0 || digits > kMaxDigits) {
        return {};
    }
    INT64 number = 0;
    (void)std::from_chars(text.data(), text.data() + digits, number);
    text.remove_prefix(digits);
    return number;
}

// Behind the point, if there is one, as parts of the unit.
std::optional<INT64> TakeFraction(std::string_view& text, INT64 unit) {
    if (text.empty() || (text[0] != '.' && text[0] != ',')) {
        return 0;
    }
    text.remove_prefix(1);
    INT64 fraction = 0;
    size_t digits = 0;
    for (; !text.empty() && IsDigit(text[0]); text.remove_prefix(1), ++digits) {
        unit /= 10;
        fraction += (text[0] - '0') * unit;
    }
    return digits > 0 ? std::optional(fraction) : std::nullopt;
}

std::optional<REFERENCE_TIME> Bounded(INT64 time) {
    return time <= source::kMaxTime ? std::optional(time) : std::nullopt;
}

// Behind the first number.
std::optional<REFERENCE_TIME> ParseColons(INT64 seconds, std::string_view text) {
    for (int parts = 1; !text.empty() && text[0] == ':'; ++parts) {
        text.remove_prefix(1);
        const auto next = TakeNumber(text);
        if (!next || *next >= kSecondsInMinute || parts == 3 || seconds > source::kMaxTime / kUnitsInSecond) {
            return {};
        }
        seconds = seconds * kSecondsInMinute + *next;
    }
    const auto fraction = TakeFraction(text, kUnitsInSecond);
    if (!fraction || !text.empty() || seconds > source::kMaxTime / kUnitsInSecond) {
        return {};
    }
    return Bounded(seconds * kUnitsInSecond + *fraction);
}

struct Unit {
    std::string_view name;
    INT64 multiplier; // to 100 ns
    INT64 divisor;
};
constexpr Unit kUnits[] = {{"s", kUnitsInSecond, 1}, {"ms", 10000, 1}, {"us", 10, 1}, {"ns", 1, 100}};

std::optional<REFERENCE_TIME> ParseWithUnit(std::string_view text) {
    const auto number = TakeNumber(text);
    for (const Unit& unit : kUnits) {
        std::string_view rest = text;
        const auto fraction = number ? TakeFraction(rest, unit.multiplier) : std::nullopt;
        if (fraction && rest == unit.name && *number <= source::kMaxTime / unit.multiplier) {
            return Bounded(*number * unit.multiplier / unit.divisor + *fraction);
        }
    }
    return {};
}

} // namespace

std::optional<REFERENCE_TIME> ParseClockTime(std::string_view text) {
    std::string_view rest = text;
    const auto first = TakeNumber(rest);
    return first && rest.starts_with(":") ? ParseColons(*first, rest) : ParseWithUnit(text);
}

} // namespace chapters
