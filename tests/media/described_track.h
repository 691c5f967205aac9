// A description in one line, and the track that it becomes, for tests that walk the tables of codecs.
#pragma once

#include <string>

#include "media/codec_description.h"
#include "media/track_facts.h"

namespace media_test {

[[nodiscard]] std::string TextOf(const media::CodecDescription& description);

// As a reader of the file finds it.
[[nodiscard]] media::TrackFacts TrackFor(INT32 trackType, const media::CodecDescription& written);

} // namespace media_test
