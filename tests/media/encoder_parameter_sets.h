// Parameter sets as real encoders write them. Made for these tests with ffmpeg 5.1 from its own test picture:
//   ffmpeg -f lavfi -i testsrc2=s=SIZE:r=25:d=0.4 -pix_fmt FORMAT -c:v libx265 -x265-params PARAMETERS -f hevc OUT
// and likewise with libx264; nothing but the parameter sets was kept.
#pragma once

namespace mkv_test {

struct HevcEncoderCase {
    const char* name;
    const char* vps;
    const char* sps;
    const char* pps;
    // The 23 bytes in front of the arrays. They equal what `ffmpeg -c copy -tag:v hvc1` writes to MP4 for the same
    // stream in all but the version (0 here), the constraint flags after the fourteenth, the frame rate bits of byte
    // 21, and each unit having an array of its own.
    const char* recordHead;
};

// clang-format off
inline constexpr HevcEncoderCase kHevcEncoderCases[] = {
    {"Main, 4:2:0, 128x96",
     "40010c01ffff01600000030090000003000003001e959809",
     "42010101600000030090000003000003001ea010206165959a4932bc05a02000000300200000030321",
     "4401c172b42240",
     "00 01 60000000 9000 00000000 1e f000 fc fd f8 f8 0000 0f 03"},
    {"Main 10, 4:2:0, 192x108",
     "40010c01ffff02200000030090000003000003001e959809",
     "42010102200000030090000003000003001ea0182071f6d96566924caf016808000003000800000300c840",
     "4401c172b46240",
     "00 02 20000000 9000 00000000 1e f000 fc fd fa fa 0000 0f 03"},
    // hrd=1:vbv-maxrate=500:vbv-bufsize=500:bitrate=400: a picture rate that is fixed in general
    {"Main with HRD parameters",
     "40010c01ffff01600000030090000003000003003c959809",
     "42010101600000030090000003000003003ca010206165959a4932bc05a0200000030020000003032c0192cbc003d08000f42440",
     "4401c172b42240",
     "00 01 60000000 9000 00000000 3c f000 fc fd f8 f8 0000 8f 03"},
    // scaling-list=default:temporal-layers=1:level-idc=5.1:high-tier=1
    {"Range extensions, 4:4:4, high tier, two temporal layers",
     "40010c02ffff2408000003009e0800000300009900009598acc048",
     "4201022408000003009e0800000300009900009002c4048b2cacc566924e5780b4040000030004000003006420",
     "4401c172860c4624",
     "00 24 08000000 9e08 00000000 99 f000 fc ff f8 f8 0000 13 03"},
    {"Range extensions, 4:2:2, 10 bits",
     "40010c01ffff0408000003009d0800000300003c959809",
     "4201010408000003009d0800000300003cb00a080f136595993932bc05a02000000300200000030321",
     "4401c172b44240",
     "00 04 08000000 9d08 00000000 3c f000 fc fe fa fa 0000 0f 03"},
    // colorprim=bt709:transfer=bt709:colormatrix=bt709:range=full:videoformat=pal:sar=16:11:overscan=show
    {"Main with colour, aspect ratio and overscan",
     "40010c01ffff01600000030090000003000003001e959809",
     "42010101600000030090000003000003001ea014207965959a4932bc129c0404043131300000030010000003019080",
     "4401c172b46240",
     "00 01 60000000 9000 00000000 1e f000 fc fd f8 f8 0000 0f 03"},
};

// libx264, High profile (100), level 1.1, 4:2:0, 176x144.
inline constexpr const char* kAvcSps = "6764000bacd942c4ec0440000003004000000c83c50a6580";
inline constexpr const char* kAvcPps = "68ebe3cb22c0";
inline constexpr unsigned kAvcProfile = 100;
inline constexpr unsigned kAvcLevel = 11;
// clang-format on

} // namespace mkv_test
