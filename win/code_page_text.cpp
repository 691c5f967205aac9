#include "win/code_page_text.h"

namespace win {

namespace {

constexpr size_t kTextLimit = size_t{1} << 30; // of characters or bytes: the system counts with signed 32 bits

} // namespace

std::string NarrowFromWide(UINT codePage, WideStringView text) {
    if (text.empty() || text.size() >= kTextLimit) {
        return {};
    }
    const auto length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    if (size <= 0) {
        return {};
    }
    std::string narrow(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(codePage, 0, text.data(), length, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

WideString WideFromNarrow(UINT codePage, std::string_view text) {
    if (text.empty() || text.size() >= kTextLimit) {
        return {};
    }
    const auto length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0);
    if (size <= 0) {
        return {};
    }
    WideString wide(static_cast<size_t>(size), 0);
    MultiByteToWideChar(codePage, 0, text.data(), length, wide.data(), size);
    return wide;
}

} // namespace win
