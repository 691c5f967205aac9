#include "tools/text_source/text_source.h"

#include "dshow/com_guard.h"
#include "tools/source_base/file_source.h"
#include "tools/source_base/source_filter.h"
#include "tools/text_source/subtitle_reader.h"
#include "tools/text_source/text_decoder.h"

namespace subtitles {

namespace {

// Registered nowhere. {C3906FD7-1E5A-4B42-8D7C-0F94A6B5E218}
constexpr GUID kTextSourceClassId{0xc3906fd7, 0x1e5a, 0x4b42, {0x8d, 0x7c, 0x0f, 0x94, 0xa6, 0xb5, 0xe2, 0x18}};

constexpr UINT64 kMaxFileBytes = UINT64{64} * 1024 * 1024;

using Parser = std::optional<SubtitleFile> (*)(const std::string& text);

HRESULT MakeSource(const source::ByteSource& bytes, Parser parse, source::OpenedSource& opened) {
    return ComGuard([&] {
        if (bytes.Size() > kMaxFileBytes) {
            return static_cast<HRESULT>(VFW_E_INVALID_FILE_FORMAT);
        }
        std::vector<BYTE> content(static_cast<size_t>(bytes.Size()));
        content.resize(bytes.ReadAt(0, content));
        std::optional<SubtitleFile> file = parse(DecodeText(content));
        if (!file) {
            return static_cast<HRESULT>(VFW_E_INVALID_FILE_FORMAT);
        }
        auto reader = std::make_unique<SubtitleReader>(std::move(*file));
        return source::CSourceFilter::Make(std::move(reader), kTextSourceClassId, opened);
    });
}

HRESULT OpenSource(const WideString& path, Parser parse, source::OpenedSource& opened) {
    return ComGuard([&] {
        source::FileSource bytes;
        const HRESULT hr = bytes.Open(path);
        return FAILED(hr) ? hr : MakeSource(bytes, parse, opened);
    });
}

} // namespace

HRESULT MakeSrtSource(const source::ByteSource& bytes, source::OpenedSource& opened) {
    return MakeSource(bytes, ParseSrt, opened);
}

HRESULT MakeAssSource(const source::ByteSource& bytes, source::OpenedSource& opened) {
    return MakeSource(bytes, ParseAss, opened);
}

HRESULT OpenSrtSource(const WideString& path, source::OpenedSource& opened) {
    return OpenSource(path, ParseSrt, opened);
}

HRESULT OpenAssSource(const WideString& path, source::OpenedSource& opened) {
    return OpenSource(path, ParseAss, opened);
}

} // namespace subtitles
