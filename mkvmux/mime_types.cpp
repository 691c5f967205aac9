#include "mkvmux/mime_types.h"

#include <algorithm>
#include <array>
#include <cwctype>
#include <filesystem>

namespace mkvmux {

namespace {

struct MimeTypeRow {
    std::wstring_view extension;
    const char* mimeType;
};

constexpr MimeTypeRow kMimeTypes[] = {
    {L".ttf", "application/x-truetype-font"},
    {L".ttc", "application/x-truetype-font"},
    {L".otf", "application/vnd.ms-opentype"},
    {L".woff", "font/woff"},
    {L".woff2", "font/woff2"},
    {L".jpg", "image/jpeg"},
    {L".jpeg", "image/jpeg"},
    {L".png", "image/png"},
    {L".gif", "image/gif"},
    {L".bmp", "image/bmp"},
    {L".webp", "image/webp"},
    {L".svg", "image/svg+xml"},
    {L".tif", "image/tiff"},
    {L".tiff", "image/tiff"},
    {L".txt", "text/plain"},
    {L".nfo", "text/plain"},
    {L".log", "text/plain"},
    {L".md", "text/markdown"},
    {L".htm", "text/html"},
    {L".html", "text/html"},
    {L".css", "text/css"},
    {L".csv", "text/csv"},
    {L".xml", "text/xml"},
    {L".json", "application/json"},
    {L".pdf", "application/pdf"},
    {L".zip", "application/zip"},
    {L".srt", "application/x-subrip"},
    {L".ass", "text/x-ssa"},
    {L".ssa", "text/x-ssa"},
    {L".mp3", "audio/mpeg"},
    {L".wav", "audio/x-wav"},
    {L".flac", "audio/flac"},
    {L".ogg", "audio/ogg"},
    {L".mkv", "video/x-matroska"},
    {L".webm", "video/webm"},
    {L".mp4", "video/mp4"},
};

} // namespace

std::string MimeTypeOf(std::wstring_view path) {
    std::wstring extension = std::filesystem::path(path).extension().native();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
    const auto* const row =
        std::find_if(std::begin(kMimeTypes), std::end(kMimeTypes),
                     [&](const MimeTypeRow& candidate) { return candidate.extension == extension; });
    return row == std::end(kMimeTypes) ? "application/octet-stream" : row->mimeType;
}

} // namespace mkvmux
