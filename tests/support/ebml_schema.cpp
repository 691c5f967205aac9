#include "tests/support/ebml_schema.h"

#include <cstdio>
#include <unordered_map>

namespace test_support {

namespace {

using enum EbmlType;
using namespace ebml_id;

constexpr uint32_t kEditionEntry = 0x45b9;
constexpr uint32_t kChapterAtom = 0xb6;
constexpr uint32_t kChapterTrack = 0x8f;
constexpr uint32_t kChapterDisplay = 0x80;
constexpr uint32_t kTag = 0x7373;
constexpr uint32_t kTargets = 0x63c0;
constexpr uint32_t kSimpleTag = 0x67c8;
constexpr uint32_t kBlockAdditions = 0x75a1;
constexpr uint32_t kBlockMore = 0xa6;
constexpr uint32_t kColour = 0x55b0;
constexpr uint32_t kMasteringMetadata = 0x55d0;
constexpr uint32_t kProjection = 0x7670;
constexpr uint32_t kContentEncodings = 0x6d80;
constexpr uint32_t kContentEncoding = 0x6240;
constexpr uint32_t kContentCompression = 0x5034;
constexpr uint32_t kBlockAdditionMapping = 0x41e4;
constexpr uint32_t kCueReference = 0xdb;

// Parents and types as in RFC 8794 and RFC 9559; what no writer near us uses is left out.
constexpr EbmlElementInfo kElements[] = {
    {kVoid, kAnyParent, Binary, "Void"},
    {kCrc32, kAnyParent, Binary, "CRC-32"},

    {kHead, 0, Master, "EBML"},
    {0x4286, kHead, Unsigned, "EBMLVersion"},
    {kReadVersion, kHead, Unsigned, "EBMLReadVersion"},
    {kMaxIdLength, kHead, Unsigned, "EBMLMaxIDLength"},
    {kMaxSizeLength, kHead, Unsigned, "EBMLMaxSizeLength"},
    {kDocType, kHead, String, "DocType"},
    {kDocTypeVersion, kHead, Unsigned, "DocTypeVersion"},
    {kDocTypeReadVersion, kHead, Unsigned, "DocTypeReadVersion"},

    {kSegment, 0, Master, "Segment"},

    {kSeekHead, kSegment, Master, "SeekHead"},
    {kSeek, kSeekHead, Master, "Seek"},
    {kSeekId, kSeek, Binary, "SeekID"},
    {kSeekPosition, kSeek, Unsigned, "SeekPosition"},

    {kInfo, kSegment, Master, "Info"},
    {0x73a4, kInfo, Binary, "SegmentUUID"},
    {0x7384, kInfo, Utf8, "SegmentFilename"},
    {kTimestampScale, kInfo, Unsigned, "TimestampScale"},
    {kDuration, kInfo, Float, "Duration"},
    {0x4461, kInfo, Date, "DateUTC"},
    {0x7ba9, kInfo, Utf8, "Title"},
    {kMuxingApp, kInfo, Utf8, "MuxingApp"},
    {kWritingApp, kInfo, Utf8, "WritingApp"},

    {kCluster, kSegment, Master, "Cluster"},
    {kTimestamp, kCluster, Unsigned, "Timestamp"},
    {0xa7, kCluster, Unsigned, "Position"},
    {0xab, kCluster, Unsigned, "PrevSize"},
    {kSimpleBlock, kCluster, Binary, "SimpleBlock"},
    {kBlockGroup, kCluster, Master, "BlockGroup"},
    {kBlock, kBlockGroup, Binary, "Block"},
    {kBlockAdditions, kBlockGroup, Master, "BlockAdditions"},
    {kBlockMore, kBlockAdditions, Master, "BlockMore"},
    {0xee, kBlockMore, Unsigned, "BlockAddID"},
    {0xa5, kBlockMore, Binary, "BlockAdditional"},
    {kBlockDuration, kBlockGroup, Unsigned, "BlockDuration"},
    {0xfa, kBlockGroup, Unsigned, "ReferencePriority"},
    {kReferenceBlock, kBlockGroup, Signed, "ReferenceBlock"},
    {0xa4, kBlockGroup, Binary, "CodecState"},
    {0x75a2, kBlockGroup, Signed, "DiscardPadding"},

    {kTracks, kSegment, Master, "Tracks"},
    {kTrackEntry, kTracks, Master, "TrackEntry"},
    {kTrackNumber, kTrackEntry, Unsigned, "TrackNumber"},
    {kTrackUid, kTrackEntry, Unsigned, "TrackUID"},
    {kTrackType, kTrackEntry, Unsigned, "TrackType"},
    {0xb9, kTrackEntry, Unsigned, "FlagEnabled"},
    {kFlagDefault, kTrackEntry, Unsigned, "FlagDefault"},
    {kFlagForced, kTrackEntry, Unsigned, "FlagForced"},
    {0x55ab, kTrackEntry, Unsigned, "FlagHearingImpaired"},
    {0x55ac, kTrackEntry, Unsigned, "FlagVisualImpaired"},
    {0x55ad, kTrackEntry, Unsigned, "FlagTextDescriptions"},
    {0x55ae, kTrackEntry, Unsigned, "FlagOriginal"},
    {0x55af, kTrackEntry, Unsigned, "FlagCommentary"},
    {kFlagLacing, kTrackEntry, Unsigned, "FlagLacing"},
    {0x6de7, kTrackEntry, Unsigned, "MinCache"},
    {0x6df8, kTrackEntry, Unsigned, "MaxCache"},
    {kDefaultDuration, kTrackEntry, Unsigned, "DefaultDuration"},
    {0x234e7a, kTrackEntry, Unsigned, "DefaultDecodedFieldDuration"},
    {0x23314f, kTrackEntry, Float, "TrackTimestampScale"},
    {0x55ee, kTrackEntry, Unsigned, "MaxBlockAdditionID"},
    {kBlockAdditionMapping, kTrackEntry, Master, "BlockAdditionMapping"},
    {0x41f0, kBlockAdditionMapping, Unsigned, "BlockAddIDValue"},
    {0x41a4, kBlockAdditionMapping, String, "BlockAddIDName"},
    {0x41e7, kBlockAdditionMapping, Unsigned, "BlockAddIDType"},
    {0x41ed, kBlockAdditionMapping, Binary, "BlockAddIDExtraData"},
    {kName, kTrackEntry, Utf8, "Name"},
    {kLanguage, kTrackEntry, String, "Language"},
    {0x22b59d, kTrackEntry, String, "LanguageBCP47"},
    {kCodecId, kTrackEntry, String, "CodecID"},
    {kCodecPrivate, kTrackEntry, Binary, "CodecPrivate"},
    {0x258688, kTrackEntry, Utf8, "CodecName"},
    {0xaa, kTrackEntry, Unsigned, "CodecDecodeAll"},
    {kCodecDelay, kTrackEntry, Unsigned, "CodecDelay"},
    {0x56bb, kTrackEntry, Unsigned, "SeekPreRoll"},

    {kVideo, kTrackEntry, Master, "Video"},
    {0x9a, kVideo, Unsigned, "FlagInterlaced"},
    {0x9d, kVideo, Unsigned, "FieldOrder"},
    {0x53b8, kVideo, Unsigned, "StereoMode"},
    {0x53c0, kVideo, Unsigned, "AlphaMode"},
    {kPixelWidth, kVideo, Unsigned, "PixelWidth"},
    {kPixelHeight, kVideo, Unsigned, "PixelHeight"},
    {0x54aa, kVideo, Unsigned, "PixelCropBottom"},
    {0x54bb, kVideo, Unsigned, "PixelCropTop"},
    {0x54cc, kVideo, Unsigned, "PixelCropLeft"},
    {0x54dd, kVideo, Unsigned, "PixelCropRight"},
    {kDisplayWidth, kVideo, Unsigned, "DisplayWidth"},
    {kDisplayHeight, kVideo, Unsigned, "DisplayHeight"},
    {0x54b2, kVideo, Unsigned, "DisplayUnit"},
    {0x2eb524, kVideo, Binary, "UncompressedFourCC"},
    {kColour, kVideo, Master, "Colour"},
    {0x55b1, kColour, Unsigned, "MatrixCoefficients"},
    {0x55b2, kColour, Unsigned, "BitsPerChannel"},
    {0x55b3, kColour, Unsigned, "ChromaSubsamplingHorz"},
    {0x55b4, kColour, Unsigned, "ChromaSubsamplingVert"},
    {0x55b5, kColour, Unsigned, "CbSubsamplingHorz"},
    {0x55b6, kColour, Unsigned, "CbSubsamplingVert"},
    {0x55b7, kColour, Unsigned, "ChromaSitingHorz"},
    {0x55b8, kColour, Unsigned, "ChromaSitingVert"},
    {0x55b9, kColour, Unsigned, "Range"},
    {0x55ba, kColour, Unsigned, "TransferCharacteristics"},
    {0x55bb, kColour, Unsigned, "Primaries"},
    {0x55bc, kColour, Unsigned, "MaxCLL"},
    {0x55bd, kColour, Unsigned, "MaxFALL"},
    {kMasteringMetadata, kColour, Master, "MasteringMetadata"},
    {0x55d1, kMasteringMetadata, Float, "PrimaryRChromaticityX"},
    {0x55d2, kMasteringMetadata, Float, "PrimaryRChromaticityY"},
    {0x55d3, kMasteringMetadata, Float, "PrimaryGChromaticityX"},
    {0x55d4, kMasteringMetadata, Float, "PrimaryGChromaticityY"},
    {0x55d5, kMasteringMetadata, Float, "PrimaryBChromaticityX"},
    {0x55d6, kMasteringMetadata, Float, "PrimaryBChromaticityY"},
    {0x55d7, kMasteringMetadata, Float, "WhitePointChromaticityX"},
    {0x55d8, kMasteringMetadata, Float, "WhitePointChromaticityY"},
    {0x55d9, kMasteringMetadata, Float, "LuminanceMax"},
    {0x55da, kMasteringMetadata, Float, "LuminanceMin"},
    {kProjection, kVideo, Master, "Projection"},

    {kAudio, kTrackEntry, Master, "Audio"},
    {0xb5, kAudio, Float, "SamplingFrequency"},
    {0x78b5, kAudio, Float, "OutputSamplingFrequency"},
    {0x9f, kAudio, Unsigned, "Channels"},
    {0x6264, kAudio, Unsigned, "BitDepth"},

    {kContentEncodings, kTrackEntry, Master, "ContentEncodings"},
    {kContentEncoding, kContentEncodings, Master, "ContentEncoding"},
    {0x5031, kContentEncoding, Unsigned, "ContentEncodingOrder"},
    {0x5032, kContentEncoding, Unsigned, "ContentEncodingScope"},
    {0x5033, kContentEncoding, Unsigned, "ContentEncodingType"},
    {kContentCompression, kContentEncoding, Master, "ContentCompression"},
    {0x4254, kContentCompression, Unsigned, "ContentCompAlgo"},
    {0x4255, kContentCompression, Binary, "ContentCompSettings"},

    {kCues, kSegment, Master, "Cues"},
    {kCuePoint, kCues, Master, "CuePoint"},
    {kCueTime, kCuePoint, Unsigned, "CueTime"},
    {kCueTrackPositions, kCuePoint, Master, "CueTrackPositions"},
    {kCueTrack, kCueTrackPositions, Unsigned, "CueTrack"},
    {kCueClusterPosition, kCueTrackPositions, Unsigned, "CueClusterPosition"},
    {kCueRelativePosition, kCueTrackPositions, Unsigned, "CueRelativePosition"},
    {kCueDuration, kCueTrackPositions, Unsigned, "CueDuration"},
    {kCueBlockNumber, kCueTrackPositions, Unsigned, "CueBlockNumber"},
    {0xea, kCueTrackPositions, Unsigned, "CueCodecState"},
    {kCueReference, kCueTrackPositions, Master, "CueReference"},
    {0x96, kCueReference, Unsigned, "CueRefTime"},

    {kAttachments, kSegment, Master, "Attachments"},
    {kAttachedFile, kAttachments, Master, "AttachedFile"},
    {kFileDescription, kAttachedFile, Utf8, "FileDescription"},
    {kFileName, kAttachedFile, Utf8, "FileName"},
    {kFileMimeType, kAttachedFile, String, "FileMimeType"},
    {kFileData, kAttachedFile, Binary, "FileData"},
    {kFileUid, kAttachedFile, Unsigned, "FileUID"},

    {kChapters, kSegment, Master, "Chapters"},
    {kEditionEntry, kChapters, Master, "EditionEntry"},
    {0x45bc, kEditionEntry, Unsigned, "EditionUID"},
    {0x45bd, kEditionEntry, Unsigned, "EditionFlagHidden"},
    {0x45db, kEditionEntry, Unsigned, "EditionFlagDefault"},
    {0x45dd, kEditionEntry, Unsigned, "EditionFlagOrdered"},
    {kChapterAtom, kEditionEntry, Master, "ChapterAtom"},
    {0x73c4, kChapterAtom, Unsigned, "ChapterUID"},
    {0x91, kChapterAtom, Unsigned, "ChapterTimeStart"},
    {0x92, kChapterAtom, Unsigned, "ChapterTimeEnd"},
    {0x98, kChapterAtom, Unsigned, "ChapterFlagHidden"},
    {0x4598, kChapterAtom, Unsigned, "ChapterFlagEnabled"},
    {kChapterTrack, kChapterAtom, Master, "ChapterTrack"},
    {0x89, kChapterTrack, Unsigned, "ChapterTrackUID"},
    {kChapterDisplay, kChapterAtom, Master, "ChapterDisplay"},
    {0x85, kChapterDisplay, Utf8, "ChapString"},
    {0x437c, kChapterDisplay, String, "ChapLanguage"},
    {0x437d, kChapterDisplay, String, "ChapLanguageBCP47"},

    {kTags, kSegment, Master, "Tags"},
    {kTag, kTags, Master, "Tag"},
    {kTargets, kTag, Master, "Targets"},
    {0x68ca, kTargets, Unsigned, "TargetTypeValue"},
    {0x63ca, kTargets, String, "TargetType"},
    {0x63c5, kTargets, Unsigned, "TagTrackUID"},
    {0x63c9, kTargets, Unsigned, "TagEditionUID"},
    {0x63c4, kTargets, Unsigned, "TagChapterUID"},
    {0x63c6, kTargets, Unsigned, "TagAttachmentUID"},
    {kSimpleTag, kTag, Master, "SimpleTag"},
    {0x45a3, kSimpleTag, Utf8, "TagName"},
    {0x447a, kSimpleTag, String, "TagLanguage"},
    {0x447b, kSimpleTag, String, "TagLanguageBCP47"},
    {0x4484, kSimpleTag, Unsigned, "TagDefault"},
    {0x4487, kSimpleTag, Utf8, "TagString"},
    {0x4485, kSimpleTag, Binary, "TagBinary"},
};

} // namespace

const EbmlElementInfo* FindElementInfo(uint32_t id) {
    static const std::unordered_map<uint32_t, const EbmlElementInfo*> byId = [] {
        std::unordered_map<uint32_t, const EbmlElementInfo*> all;
        for (const EbmlElementInfo& info : kElements) {
            all.emplace(info.id, &info);
        }
        return all;
    }();
    const auto found = byId.find(id);
    return found == byId.end() ? nullptr : found->second;
}

std::string ElementName(uint32_t id) {
    if (const EbmlElementInfo* const info = FindElementInfo(id)) {
        return info->name;
    }
    char text[16];
    std::snprintf(text, sizeof(text), "0x%X", static_cast<unsigned>(id));
    return text;
}

bool IsAllowedIn(uint32_t id, uint32_t parent) {
    const EbmlElementInfo* const info = FindElementInfo(id);
    if (info == nullptr || info->parent == kAnyParent || info->parent == parent) {
        return true;
    }
    // The two elements that may stand in themselves.
    return id == parent && (id == kSimpleTag || id == kChapterAtom);
}

bool MayHaveUnknownSize(uint32_t id) {
    return id == kSegment || id == kCluster;
}

} // namespace test_support
