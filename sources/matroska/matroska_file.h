// MatroskaFile: the head of a Matroska file (tracks, attachments, time scale) as plain values; the blocks are read by
// BlockWalker.
//
// Units: bytes; times in nanoseconds. Texts are UTF-8.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "media/track_facts.h"
#include "media/track_type.h"
#include "sources/base/chapters.h"
#include "sources/matroska/ebml_reader.h"

namespace matroska {

// A step that turned the track's data into what is stored.
struct ContentEncoding {
    UINT64 scope = 1;           // bit 0: blocks, bit 1: codec private data
    bool isCompression = true;  // else encryption
    UINT64 algorithm = 0;       // 0: zlib, 3: header stripping
    std::vector<BYTE> settings; // the stripped header
    bool isDamaged = false;     // the settings are longer than any real ones
};

// The cues' settings stand beside their blocks.
inline constexpr const char* kWebVttId = "S_TEXT/WEBVTT";

// What its media types are made of, and what else the file says of the track.
struct Track : media::TrackFacts {
    UINT64 number = 0;
    bool lacksPrivate = false; // there was no room for it
    std::string name;
    std::string languageTag; // BCP 47
    bool isDefault = true;
    bool isForced = false;
    bool isEnabled = true;
    UINT64 codecDelayNs = 0;             // to be taken off its blocks' times
    std::optional<bool> hearingImpaired; // none: not said
    std::optional<bool> visualImpaired;
    std::optional<bool> original;
    std::optional<bool> commentary;
    UINT64 maxAdditionId = 0;      // 0: its blocks carry nothing besides their frames
    bool hasAlpha = false;         // in additions to its blocks
    std::vector<BYTE> dolbyVision; // the configuration record; empty: none
    std::vector<ContentEncoding> encodings;

    [[nodiscard]] bool IsSubtitle() const { return type == UINT64{media::kTrackTypeSubtitle}; }
};

// Where the attachment's bytes lie; they are read when they are wanted.
struct AttachedFile {
    std::string fileName;
    std::string description;
    std::string mimeType;
    UINT64 uid = 0;
    Element data;
    bool isDamaged = false; // its data are missing or reach behind it
};

struct MatroskaFile {
    Element segment;
    UINT64 timestampScaleNs = 1'000'000;
    double durationTicks = 0; // 0: not said
    std::string title;
    std::vector<Track> tracks; // each number once
    std::vector<AttachedFile> attachments;
    bool lacksAttachments = false; // some could not even be found
    std::vector<source::Chapter> chapters;
    std::vector<source::Tag> tags; // of the whole file
};

// None when the bytes are no Matroska file, or one without tracks.
[[nodiscard]] std::optional<MatroskaFile> ReadMatroskaFile(const source::ByteSource& source);

} // namespace matroska
