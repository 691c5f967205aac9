#include "sources/text/text_source.h"

#include "dshow/com_guard.h"
#include "sources/base/file_source.h"
#include "sources/base/limits.h"
#include "sources/base/source_filter.h"
#include "sources/text/ass_parser.h"
#include "sources/text/srt_parser.h"
#include "sources/text/subtitle_reader.h"
#include "sources/text/text_decoder.h"
#include "sources/text/vtt_parser.h"

namespace subtitles {

namespace {

// Registered nowhere. {C3906FD7-1E5A-4B42-8D7C-0F94A6B5E218}
constexpr GUID kTextSourceClassId{0xc3906fd7, 0x1e5a, 0x4b42, {0x8d, 0x7c, 0x0f, 0x94, 0xa6, 0xb5, 0xe2, 0x18}};

constexpr UINT64 kMaxFileBytes = 64 * source::kMiB;

// What takes more as UTF-8 is not text in an encoding that a reader of subtitles knows.
constexpr size_t kMaxTextBytes = 96 * source::kMiB;

// The bytes are gone before the text is looked at.
std::string ReadText(const source::ByteSource& bytes) {
    std::vector<BYTE> content(static_cast<size_t>(bytes.Size()));
    content.resize(bytes.ReadAt(0, content));
    return DecodeText(content, kMaxTextBytes);
}

HRESULT MakeSource(const source::ByteSource& bytes, Parser parse, source::OpenedSource& opened) {
    return ComGuard([&] {
        std::unique_ptr<source::PacketReader> reader = MakeReader(bytes, parse);
        return reader ? source::CSourceFilter::Make(std::move(reader), kTextSourceClassId, opened)
                      : static_cast<HRESULT>(VFW_E_INVALID_FILE_FORMAT);
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

std::unique_ptr<source::PacketReader> MakeReader(const source::ByteSource& bytes, Parser parse) {
    if (bytes.Size() > kMaxFileBytes) {
        return nullptr;
    }
    const std::string text = ReadText(bytes);
    std::optional<SubtitleFile> file = text.size() <= kMaxTextBytes ? parse(text) : std::nullopt;
    return file ? std::make_unique<SubtitleReader>(std::move(*file)) : nullptr;
}

HRESULT MakeSrtSource(const source::ByteSource& bytes, source::OpenedSource& opened) {
    return MakeSource(bytes, ParseSrt, opened);
}

HRESULT MakeAssSource(const source::ByteSource& bytes, source::OpenedSource& opened) {
    return MakeSource(bytes, ParseAss, opened);
}

HRESULT MakeVttSource(const source::ByteSource& bytes, source::OpenedSource& opened) {
    return MakeSource(bytes, ParseVtt, opened);
}

HRESULT OpenSrtSource(const WideString& path, source::OpenedSource& opened) {
    return OpenSource(path, ParseSrt, opened);
}

HRESULT OpenAssSource(const WideString& path, source::OpenedSource& opened) {
    return OpenSource(path, ParseAss, opened);
}

HRESULT OpenVttSource(const WideString& path, source::OpenedSource& opened) {
    return OpenSource(path, ParseVtt, opened);
}

} // namespace subtitles
