// AviFile: the streams of an AVI file and where each of their chunks lies, as plain values. OpenDML files are read
// too, whole or cut off.
//
// Units: bytes; a stream's time base is rate / scale units per second.
// Errors: what is damaged is left out; nothing is believed further than the file reaches.
#pragma once

#include <optional>
#include <vector>

#include "sources/base/byte_source.h"
#include "win/platform.h"

namespace avi {

struct AviStream {
    DWORD type = 0; // 'vids', 'auds', …
    DWORD scale = 0;
    DWORD rate = 0;
    DWORD start = 0;          // units of time before the first chunk
    DWORD sampleSize = 0;     // 0: each chunk is one unit of time
    std::vector<BYTE> format; // BITMAPINFOHEADER or WAVEFORMATEX with what follows
    DWORD largestChunk = 0;
};

struct AviChunk {
    UINT64 offset = 0; // of the data
    DWORD size = 0;
    WORD stream = 0;
    bool keyframe = true; // as long as no index says otherwise
};

struct AviFile {
    std::vector<AviStream> streams;
    std::vector<AviChunk> chunks; // in the order of the file
    bool isCutOff = false;        // the file ends before it says that it does
    bool lacksChunks = false;     // there are more than anybody would record
};

// None when the bytes are no AVI file.
[[nodiscard]] std::optional<AviFile> ReadAviFile(const source::ByteSource& source);

} // namespace avi
