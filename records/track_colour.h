// MuxTrackColour as lists of its numbers, in the order of its fields.
#pragma once

#include <array>

#include <qrx_mkvmuxer.h>

namespace records {

inline constexpr std::array<INT32 MuxTrackColour::*, 13> kColourNumbers{&MuxTrackColour::matrixCoefficients,
                                                                        &MuxTrackColour::bitsPerChannel,
                                                                        &MuxTrackColour::chromaSubsamplingHorz,
                                                                        &MuxTrackColour::chromaSubsamplingVert,
                                                                        &MuxTrackColour::cbSubsamplingHorz,
                                                                        &MuxTrackColour::cbSubsamplingVert,
                                                                        &MuxTrackColour::chromaSitingHorz,
                                                                        &MuxTrackColour::chromaSitingVert,
                                                                        &MuxTrackColour::range,
                                                                        &MuxTrackColour::transferCharacteristics,
                                                                        &MuxTrackColour::primaries,
                                                                        &MuxTrackColour::maxContentLight,
                                                                        &MuxTrackColour::maxFrameAverageLight};
inline constexpr std::array<double MuxTrackColour::*, 10> kColourMastering{
    &MuxTrackColour::redX,         &MuxTrackColour::redY,        &MuxTrackColour::greenX, &MuxTrackColour::greenY,
    &MuxTrackColour::blueX,        &MuxTrackColour::blueY,       &MuxTrackColour::whiteX, &MuxTrackColour::whiteY,
    &MuxTrackColour::maxLuminance, &MuxTrackColour::minLuminance};

// Nothing is told.
[[nodiscard]] MuxTrackColour UntoldColour(INT32 index);
// Whether every value is -1 or one that may be; which standards there are is the writer's business.
[[nodiscard]] bool IsTrackColour(const MuxTrackColour& colour);
[[nodiscard]] bool HasDolbyVision(const MuxTrackColour& colour);

} // namespace records
