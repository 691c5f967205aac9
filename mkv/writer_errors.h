// The fixed texts that the writer and its output throw, as plain C strings (const char*). Tests compare with these
// constants.
#pragma once

namespace mkv {

inline constexpr const char* kNoOutputError = "MkvWriter::writeMatroskaHead failed get callback";
inline constexpr const char* kUnsupportedTypeError = "CMkvWriter::getTrackType unsupported type";
inline constexpr const char* kTrackOutOfRangeError = "CMkvWriter::getTrackType trackNum out of range";
inline constexpr const char* kUnsupportedCodecError = "CMkvWriter::addTrack unsupported codec";
inline constexpr const char* kUnknownSeekModeError = "CMkvIO::setFilePointer  unknown mode"; // two blanks, as shipped
inline constexpr const char* kSeekFailedError = "CMkvIO::setFilePointer failed";

} // namespace mkv
