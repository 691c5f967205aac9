#include "codecs/alac_config.h"

#include <algorithm>
#include <string_view>

#include "codecs/big_endian.h"

namespace codecs {

namespace {

constexpr size_t kConfigBytes = 24;
constexpr size_t kSizeBytes = 4;
// Of the atom that names the format, and in front of the configuration in its own: size, name, version and flags.
constexpr size_t kAtomBytes = 12;

// Frame length (4), version, bit depth, three parameters, channels, longest run (2), largest frame (4), bit rate (4),
// rate (4).
constexpr size_t kVersionPlace = 4;
constexpr size_t kBitDepthPlace = 5;
constexpr size_t kChannelsPlace = 9;
constexpr size_t kRatePlace = 20;

bool IsAtom(ByteView bytes, std::string_view name) {
    return bytes.size() >= kAtomBytes && std::equal(name.begin(), name.end(), bytes.begin() + kSizeBytes);
}

} // namespace

ByteView BareAlacCookie(ByteView cookie) {
    if (IsAtom(cookie, "frma")) {
        cookie = cookie.subspan(kAtomBytes);
    }
    if (!IsAtom(cookie, "alac")) {
        return cookie;
    }
    const auto size = static_cast<size_t>(ReadBigEndian(cookie.first(kSizeBytes)));
    return cookie.first(std::clamp(size, kAtomBytes, cookie.size())).subspan(kAtomBytes);
}

std::optional<AlacConfig> ParseAlacConfig(ByteView cookie) {
    if (cookie.size() < kConfigBytes || cookie[kVersionPlace] != 0) {
        return std::nullopt;
    }
    AlacConfig config;
    config.bitDepth = cookie[kBitDepthPlace];
    config.channels = cookie[kChannelsPlace];
    config.rateHz = static_cast<std::uint32_t>(ReadBigEndian(cookie.subspan(kRatePlace, sizeof(config.rateHz))));
    const bool isUsable = config.bitDepth != 0 && config.channels != 0 && config.rateHz != 0;
    return isUsable ? std::optional(config) : std::nullopt;
}

} // namespace codecs
