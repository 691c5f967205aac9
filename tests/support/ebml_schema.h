// What the EBML reader knows of the elements of Matroska (RFC 9559) and of EBML (RFC 8794).
#pragma once

#include <cstdint>
#include <string>

namespace test_support {

enum class EbmlType { Master, Unsigned, Signed, Float, String, Utf8, Date, Binary };

struct EbmlElementInfo {
    uint32_t id;     // with its length marker, as written
    uint32_t parent; // 0: at the top; kAnyParent: in every master
    EbmlType type;
    const char* name;
};

inline constexpr uint32_t kAnyParent = 0xffffffff;

// Null for an identifier that is not in the table.
[[nodiscard]] const EbmlElementInfo* FindElementInfo(uint32_t id);
// The element's name, or its identifier in hexadecimal.
[[nodiscard]] std::string ElementName(uint32_t id);
// Whether the element may stand directly in that parent (0: at the top). Unknown elements may stand anywhere.
[[nodiscard]] bool IsAllowedIn(uint32_t id, uint32_t parent);
// Masters whose end may be left open in a file that is written in one pass.
[[nodiscard]] bool MayHaveUnknownSize(uint32_t id);

namespace ebml_id {

inline constexpr uint32_t kHead = 0x1a45dfa3;
inline constexpr uint32_t kMaxIdLength = 0x42f2;
inline constexpr uint32_t kMaxSizeLength = 0x42f3;
inline constexpr uint32_t kReadVersion = 0x42f7;
inline constexpr uint32_t kDocType = 0x4282;
inline constexpr uint32_t kDocTypeVersion = 0x4287;
inline constexpr uint32_t kDocTypeReadVersion = 0x4285;
inline constexpr uint32_t kVoid = 0xec;
inline constexpr uint32_t kCrc32 = 0xbf;
inline constexpr uint32_t kSegment = 0x18538067;
inline constexpr uint32_t kSeekHead = 0x114d9b74;
inline constexpr uint32_t kSeek = 0x4dbb;
inline constexpr uint32_t kSeekId = 0x53ab;
inline constexpr uint32_t kSeekPosition = 0x53ac;
inline constexpr uint32_t kInfo = 0x1549a966;
inline constexpr uint32_t kTimestampScale = 0x2ad7b1;
inline constexpr uint32_t kDuration = 0x4489;
inline constexpr uint32_t kMuxingApp = 0x4d80;
inline constexpr uint32_t kWritingApp = 0x5741;
inline constexpr uint32_t kCluster = 0x1f43b675;
inline constexpr uint32_t kTimestamp = 0xe7;
inline constexpr uint32_t kSimpleBlock = 0xa3;
inline constexpr uint32_t kBlockGroup = 0xa0;
inline constexpr uint32_t kBlock = 0xa1;
inline constexpr uint32_t kBlockDuration = 0x9b;
inline constexpr uint32_t kReferenceBlock = 0xfb;
inline constexpr uint32_t kTracks = 0x1654ae6b;
inline constexpr uint32_t kTrackEntry = 0xae;
inline constexpr uint32_t kTrackNumber = 0xd7;
inline constexpr uint32_t kTrackUid = 0x73c5;
inline constexpr uint32_t kTrackType = 0x83;
inline constexpr uint32_t kFlagDefault = 0x88;
inline constexpr uint32_t kFlagForced = 0x55aa;
inline constexpr uint32_t kFlagLacing = 0x9c;
inline constexpr uint32_t kDefaultDuration = 0x23e383;
inline constexpr uint32_t kName = 0x536e;
inline constexpr uint32_t kLanguage = 0x22b59c;
inline constexpr uint32_t kCodecId = 0x86;
inline constexpr uint32_t kCodecPrivate = 0x63a2;
inline constexpr uint32_t kCodecDelay = 0x56aa;
inline constexpr uint32_t kVideo = 0xe0;
inline constexpr uint32_t kPixelWidth = 0xb0;
inline constexpr uint32_t kDisplayWidth = 0x54b0;
inline constexpr uint32_t kDisplayHeight = 0x54ba;
inline constexpr uint32_t kPixelHeight = 0xba;
inline constexpr uint32_t kAudio = 0xe1;
inline constexpr uint32_t kCues = 0x1c53bb6b;
inline constexpr uint32_t kCuePoint = 0xbb;
inline constexpr uint32_t kCueTime = 0xb3;
inline constexpr uint32_t kCueTrackPositions = 0xb7;
inline constexpr uint32_t kCueTrack = 0xf7;
inline constexpr uint32_t kCueClusterPosition = 0xf1;
inline constexpr uint32_t kCueRelativePosition = 0xf0;
inline constexpr uint32_t kCueDuration = 0xb2;
inline constexpr uint32_t kCueBlockNumber = 0x5378;
inline constexpr uint32_t kAttachments = 0x1941a469;
inline constexpr uint32_t kAttachedFile = 0x61a7;
inline constexpr uint32_t kFileDescription = 0x467e;
inline constexpr uint32_t kFileName = 0x466e;
inline constexpr uint32_t kFileMimeType = 0x4660;
inline constexpr uint32_t kFileData = 0x465c;
inline constexpr uint32_t kFileUid = 0x46ae;
inline constexpr uint32_t kChapters = 0x1043a770;
inline constexpr uint32_t kTags = 0x1254c367;

} // namespace ebml_id

} // namespace test_support
