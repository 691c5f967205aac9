#include "sources/matroska/track_entry_reader.h"

#include <cstring>

#include <matroska/KaxContentEncoding.h>
#include <matroska/KaxSemantic.h>

#include "sources/matroska/colour_reader.h"

namespace matroska {

namespace {

using namespace libmatroska;

// Writers strip what all frames of a codec begin with: a few bytes.
constexpr UINT64 kMaxStrippedHeaderBytes = 1024;
constexpr size_t kMaxEncodings = 2; // one is read, the second one says that there are too many

// None for anything but four letters.
DWORD ReadFourCc(const EbmlReader& reader, const Element& element) {
    DWORD fourCc = 0;
    const std::vector<BYTE> bytes = reader.ReadBytes(element, sizeof(fourCc));
    if (bytes.size() == sizeof(fourCc)) {
        std::memcpy(&fourCc, bytes.data(), sizeof(fourCc));
    }
    return fourCc;
}

void ReadVideo(const EbmlReader& reader, const Element& element, Track& track) {
    media::VideoFacts& video = track.video;
    video = {}; // the last element counts
    track.hasAlpha = false;
    (void)reader.ForEachChild(element, [&](const Element& child) {
        const UINT64 value = reader.ReadUnsigned(child);
        if (child.id == IdOf<KaxVideoPixelWidth>()) {
            video.pixelWidth = value;
        } else if (child.id == IdOf<KaxVideoPixelHeight>()) {
            video.pixelHeight = value;
        } else if (child.id == IdOf<KaxVideoPixelCropLeft>() || child.id == IdOf<KaxVideoPixelCropRight>()) {
            video.cropWidth += value;
        } else if (child.id == IdOf<KaxVideoPixelCropTop>() || child.id == IdOf<KaxVideoPixelCropBottom>()) {
            video.cropHeight += value;
        } else if (child.id == IdOf<KaxVideoDisplayWidth>()) {
            video.displayWidth = value;
        } else if (child.id == IdOf<KaxVideoDisplayHeight>()) {
            video.displayHeight = value;
        } else if (child.id == IdOf<KaxVideoFlagInterlaced>()) {
            video.flagInterlaced = value;
        } else if (child.id == IdOf<KaxVideoFieldOrder>()) {
            video.fieldOrder = value;
        } else if (child.id == IdOf<KaxVideoColourSpace>()) {
            video.uncompressedFourCc = ReadFourCc(reader, child);
        } else if (child.id == IdOf<KaxVideoAlphaMode>()) {
            track.hasAlpha = value != 0;
        } else if (child.id == IdOf<KaxVideoColour>()) {
            video.colour = ReadColour(reader, child);
        }
    });
}

void ReadAudio(const EbmlReader& reader, const Element& element, Track& track) {
    media::AudioFacts& audio = track.audio;
    audio = {}; // the last element counts
    (void)reader.ForEachChild(element, [&](const Element& child) {
        if (child.id == IdOf<KaxAudioSamplingFreq>()) {
            audio.samplingFrequency = reader.ReadFloat(child, audio.samplingFrequency);
        } else if (child.id == IdOf<KaxAudioChannels>()) {
            audio.channels = reader.ReadUnsigned(child, audio.channels);
        } else if (child.id == IdOf<KaxAudioBitDepth>()) {
            audio.bitDepth = reader.ReadUnsigned(child);
        }
    });
}

void ReadCompression(const EbmlReader& reader, const Element& element, ContentEncoding& encoding) {
    (void)reader.ForEachChild(element, [&](const Element& child) {
        if (child.id == IdOf<KaxContentCompAlgo>()) {
            encoding.algorithm = reader.ReadUnsigned(child);
        } else if (child.id == IdOf<KaxContentCompSettings>()) {
            encoding.settings = reader.ReadBytes(child, kMaxStrippedHeaderBytes);
            encoding.isDamaged = encoding.settings.size() != child.Size();
        }
    });
}

ContentEncoding ReadEncoding(const EbmlReader& reader, const Element& element) {
    ContentEncoding encoding;
    (void)reader.ForEachChild(element, [&](const Element& child) {
        if (child.id == IdOf<KaxContentEncodingScope>()) {
            encoding.scope = reader.ReadUnsigned(child, encoding.scope);
        } else if (child.id == IdOf<KaxContentEncodingType>()) {
            encoding.isCompression = reader.ReadUnsigned(child) == 0;
        } else if (child.id == IdOf<KaxContentCompression>()) {
            ReadCompression(reader, child, encoding);
        }
    });
    return encoding;
}

std::vector<ContentEncoding> ReadEncodings(const EbmlReader& reader, const Element& element) {
    std::vector<ContentEncoding> encodings;
    (void)reader.ForEachChild(element, [&](const Element& child) {
        if (child.id == IdOf<KaxContentEncoding>() && encodings.size() < kMaxEncodings) {
            encodings.push_back(ReadEncoding(reader, child));
        }
    });
    return encodings;
}

void ReadTexts(const EbmlReader& reader, const Element& child, UINT64 privateRoom, Track& track) {
    if (child.id == IdOf<KaxCodecID>()) {
        track.codecId = reader.ReadString(child);
    } else if (child.id == IdOf<KaxTrackName>()) {
        track.name = reader.ReadString(child);
    } else if (child.id == IdOf<KaxTrackLanguage>()) {
        track.language = reader.ReadString(child);
    } else if (child.id == IdOf<KaxLanguageIETF>()) {
        track.languageTag = reader.ReadString(child);
    } else if (child.id == IdOf<KaxCodecPrivate>()) {
        track.codecPrivate = reader.ReadBytes(child, privateRoom);
        track.lacksPrivate = track.codecPrivate.size() != child.Size();
    }
}

void ReadNumbers(const EbmlReader& reader, const Element& child, Track& track) {
    if (child.id == IdOf<KaxTrackNumber>()) {
        track.number = reader.ReadUnsigned(child);
    } else if (child.id == IdOf<KaxTrackType>()) {
        track.type = reader.ReadUnsigned(child);
    } else if (child.id == IdOf<KaxTrackFlagDefault>()) {
        track.isDefault = reader.ReadUnsigned(child, 1) != 0;
    } else if (child.id == IdOf<KaxTrackFlagForced>()) {
        track.isForced = reader.ReadUnsigned(child) != 0;
    } else if (child.id == IdOf<KaxMaxBlockAdditionID>()) {
        track.maxAdditionId = reader.ReadUnsigned(child);
    } else if (child.id == IdOf<KaxTrackFlagEnabled>()) {
        track.isEnabled = reader.ReadUnsigned(child, 1) != 0;
    } else if (child.id == IdOf<KaxTrackDefaultDuration>()) {
        track.defaultDurationNs = reader.ReadUnsigned(child);
    } else if (child.id == IdOf<KaxCodecDelay>()) {
        track.codecDelayNs = reader.ReadUnsigned(child);
    }
}

void ReadFlags(const EbmlReader& reader, const Element& child, Track& track) {
    if (child.id == IdOf<KaxFlagHearingImpaired>()) {
        track.hearingImpaired = reader.ReadUnsigned(child) != 0;
    } else if (child.id == IdOf<KaxFlagVisualImpaired>()) {
        track.visualImpaired = reader.ReadUnsigned(child) != 0;
    } else if (child.id == IdOf<KaxFlagOriginal>()) {
        track.original = reader.ReadUnsigned(child) != 0;
    } else if (child.id == IdOf<KaxFlagCommentary>()) {
        track.commentary = reader.ReadUnsigned(child) != 0;
    }
}

void ReadParts(const EbmlReader& reader, const Element& child, Track& track) {
    if (child.id == IdOf<KaxTrackVideo>()) {
        ReadVideo(reader, child, track);
    } else if (child.id == IdOf<KaxTrackAudio>()) {
        ReadAudio(reader, child, track);
    } else if (child.id == IdOf<KaxBlockAdditionMapping>()) {
        ReadDolbyVision(reader, child, track.dolbyVision);
    } else if (child.id == IdOf<KaxContentEncodings>()) {
        track.encodings = ReadEncodings(reader, child);
    }
}

} // namespace

Track ReadTrackEntry(const EbmlReader& reader, const Element& entry, UINT64 privateRoom) {
    Track track;
    (void)reader.ForEachChild(entry, [&](const Element& child) {
        ReadTexts(reader, child, privateRoom, track);
        ReadNumbers(reader, child, track);
        ReadFlags(reader, child, track);
        ReadParts(reader, child, track);
    });
    if (track.language.empty()) { // the tag's first part, or what the format says of a track that does not say
        track.language = track.languageTag.empty() ? "eng" : track.languageTag.substr(0, track.languageTag.find('-'));
    }
    return track;
}

} // namespace matroska
