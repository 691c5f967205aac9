// Builds small Matroska files in memory, element by element.
#pragma once

#include <string>
#include <string_view>

#include "tests/support/byte_builder.h"
#include "tests/support/ebml_schema.h"

namespace test_matroska {

using test_support::RawBytes;

namespace id {
// Those that the muxer writes, and others that a reader meets.
using namespace test_support::ebml_id;
inline constexpr uint32_t kFlagEnabled = 0xb9;
inline constexpr uint32_t kLanguageTag = 0x22b59d;
inline constexpr uint32_t kFlagHearingImpaired = 0x55ab;
inline constexpr uint32_t kFlagVisualImpaired = 0x55ac;
inline constexpr uint32_t kFlagOriginal = 0x55ae;
inline constexpr uint32_t kFlagCommentary = 0x55af;
inline constexpr uint32_t kTitle = 0x7ba9;
inline constexpr uint32_t kDisplayWidth = 0x54b0;
inline constexpr uint32_t kDisplayHeight = 0x54ba;
inline constexpr uint32_t kFlagInterlaced = 0x9a;
inline constexpr uint32_t kFieldOrder = 0x9d;
inline constexpr uint32_t kColour = 0x55b0;
inline constexpr uint32_t kMatrixCoefficients = 0x55b1;
inline constexpr uint32_t kRange = 0x55b9;
inline constexpr uint32_t kTransferCharacteristics = 0x55ba;
inline constexpr uint32_t kPrimaries = 0x55bb;
inline constexpr uint32_t kMaxCll = 0x55bc;
inline constexpr uint32_t kMasteringMetadata = 0x55d0;
inline constexpr uint32_t kRedX = 0x55d1;
inline constexpr uint32_t kLuminanceMin = 0x55da;
inline constexpr uint32_t kBlockAdditionMapping = 0x41e4;
inline constexpr uint32_t kBlockAddIdType = 0x41e7;
inline constexpr uint32_t kBlockAddIdExtraData = 0x41ed;
inline constexpr uint32_t kSamplingFrequency = 0xb5;
inline constexpr uint32_t kChannels = 0x9f;
inline constexpr uint32_t kBitDepth = 0x6264;
inline constexpr uint32_t kContentEncodings = 0x6d80;
inline constexpr uint32_t kContentEncoding = 0x6240;
inline constexpr uint32_t kContentEncodingOrder = 0x5031;
inline constexpr uint32_t kContentEncodingScope = 0x5032;
inline constexpr uint32_t kContentEncodingType = 0x5033;
inline constexpr uint32_t kContentCompression = 0x5034;
inline constexpr uint32_t kContentCompAlgo = 0x4254;
inline constexpr uint32_t kContentCompSettings = 0x4255;
} // namespace id

inline constexpr uint8_t kKeyframe = 0x80;
inline constexpr uint8_t kXiphLacing = 0x02;
inline constexpr uint8_t kFixedLacing = 0x04;
inline constexpr uint8_t kEbmlLacing = 0x06;

[[nodiscard]] RawBytes Text(std::string_view text);
// With a size field of eight bytes.
[[nodiscard]] RawBytes Master(uint32_t id, std::initializer_list<RawBytes> children);
// The size is all ones.
[[nodiscard]] RawBytes UnknownMaster(uint32_t id, std::initializer_list<RawBytes> children);
[[nodiscard]] RawBytes Float(uint32_t id, double value);

[[nodiscard]] RawBytes Head(std::string_view docType = "matroska");
// An entry with that number, type (1 video, 2 audio, 17 subtitle), codec, and whatever else.
[[nodiscard]] RawBytes TrackEntry(uint8_t number, uint8_t type, std::string_view codec,
                                  std::initializer_list<RawBytes> more = {});
// A cluster with that timestamp in ticks.
[[nodiscard]] RawBytes Cluster(uint64_t ticks, std::initializer_list<RawBytes> children);
[[nodiscard]] RawBytes SimpleBlock(uint8_t track, int16_t ticks, uint8_t flags, std::string_view payload);
[[nodiscard]] RawBytes BlockGroup(uint8_t track, int16_t ticks, uint8_t flags, std::string_view payload,
                                  std::initializer_list<RawBytes> more = {});
// Head, segment, these tracks, and what follows them.
[[nodiscard]] RawBytes FileOf(std::initializer_list<RawBytes> tracks, std::initializer_list<RawBytes> rest);

// Video with a lot of clusters, laced audio, compressed subtitles, an attachment: all that can be damaged.
[[nodiscard]] RawBytes RichFile();

} // namespace test_matroska
