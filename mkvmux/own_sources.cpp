#include "mkvmux/own_sources.h"

#include <algorithm>
#include <cwctype>
#include <filesystem>

#include "sources/annexb/annexb_source.h"
#include "sources/av1/av1_source.h"
#include "sources/avi/avi_source.h"
#include "sources/matroska/matroska_source.h"
#include "sources/text/text_source.h"

namespace mkvmux {

namespace {

// Those that know their times themselves.
template <HRESULT (*Open)(const std::wstring& path, source::OpenedSource& opened)>
HRESULT OpenTimed(const std::wstring& path, const OwnSourceOptions& /*options*/, source::OpenedSource& opened) {
    return Open(path, opened);
}

HRESULT OpenMatroska(const std::wstring& path, const OwnSourceOptions& options, source::OpenedSource& opened) {
    const auto rule = options.exactTimes ? matroska::TimeRule::Exact : matroska::TimeRule::AsStored;
    return matroska::OpenSource(path, opened, rule);
}

template <annexb::Codec Codec>
HRESULT OpenByteStream(const std::wstring& path, const OwnSourceOptions& options, source::OpenedSource& opened) {
    return annexb::OpenSource(path, Codec, options.frameRate, opened);
}

HRESULT OpenObu(const std::wstring& path, const OwnSourceOptions& options, source::OpenedSource& opened) {
    return av1::OpenObuSource(path, options.frameRate, opened);
}

constexpr OwnSource kAvi{"AVI", OpenTimed<avi::OpenSource>};
constexpr OwnSource kMatroska{"Matroska", OpenMatroska};
constexpr OwnSource kAvc{"H.264", OpenByteStream<annexb::Codec::Avc>};
constexpr OwnSource kHevc{"H.265", OpenByteStream<annexb::Codec::Hevc>};
constexpr OwnSource kIvf{"IVF", OpenTimed<av1::OpenIvfSource>};
constexpr OwnSource kObu{"AV1", OpenObu};
constexpr OwnSource kSrt{"SubRip", OpenTimed<subtitles::OpenSrtSource>};
constexpr OwnSource kAss{"ASS", OpenTimed<subtitles::OpenAssSource>};
constexpr OwnSource kVtt{"WebVTT", OpenTimed<subtitles::OpenVttSource>};

struct Extension {
    const wchar_t* text; // in small letters
    const OwnSource* source;
};

constexpr Extension kExtensions[] = {
    {L".mkv", &kMatroska}, {L".webm", &kMatroska}, {L".mka", &kMatroska}, {L".mks", &kMatroska}, {L".h264", &kAvc},
    {L".264", &kAvc},      {L".avc", &kAvc},       {L".h265", &kHevc},    {L".265", &kHevc},     {L".hevc", &kHevc},
    {L".ivf", &kIvf},      {L".obu", &kObu},       {L".av1", &kObu},      {L".srt", &kSrt},      {L".ass", &kAss},
    {L".ssa", &kAss},      {L".vtt", &kVtt},
};

std::wstring ExtensionOf(const std::wstring& path) {
    std::wstring extension = std::filesystem::path(path).extension().native();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
    return extension;
}

} // namespace

const OwnSource* OwnSourceFor(const std::wstring& path) {
    const std::wstring extension = ExtensionOf(path);
    for (const Extension& row : kExtensions) {
        if (extension == row.text) {
            return row.source;
        }
    }
    return nullptr;
}

const OwnSource* OwnSourceFor(ContentKind content) {
    switch (content) {
    case ContentKind::Matroska:
        return &kMatroska;
    case ContentKind::Avc:
        return &kAvc;
    case ContentKind::Hevc:
        return &kHevc;
    case ContentKind::Ivf:
        return &kIvf;
    case ContentKind::Av1:
        return &kObu;
    case ContentKind::SubRip:
        return &kSrt;
    case ContentKind::Ass:
        return &kAss;
    default:
        return nullptr;
    }
}

const OwnSource& OwnAviSource() {
    return kAvi;
}

} // namespace mkvmux
