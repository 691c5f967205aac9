// Layouts of WAVEFORMATEX, by what becomes of the bytes that follow it.
#pragma once

#include "media/codec_table.h"

namespace media {

extern const CodecLayout kPlainWaveLayout; // they are left alone
extern const CodecLayout kExtraWaveLayout; // they are the private data
extern const CodecLayout kOpusLayout;      // as many as cbSize says are the private data; no bit depth of 0
extern const CodecLayout kBigEndianLayout; // PCM whose subtype may tell the depth; the bytes that follow are left alone
extern const CodecLayout kWholeWaveLayout; // the private data is the whole block

// What a track can say, cut to what the structures can hold; 0 for a rate that is none.
[[nodiscard]] DWORD SamplesPerSecond(const AudioFacts& audio);
[[nodiscard]] WORD ChannelsOf(const AudioFacts& audio);
[[nodiscard]] WORD BitsPerSample(const AudioFacts& audio);

} // namespace media
