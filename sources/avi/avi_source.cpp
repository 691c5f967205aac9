#include "sources/avi/avi_source.h"

#include "dshow/com_guard.h"
#include "sources/avi/avi_reader.h"
#include "sources/base/buffered_source.h"
#include "sources/base/file_source.h"
#include "sources/base/source_filter.h"

namespace avi {

namespace {

// Registered nowhere. {8E6A2D14-57C3-4F0B-A9B1-6D23C8E5F470}
constexpr GUID kAviSourceClassId{0x8e6a2d14, 0x57c3, 0x4f0b, {0xa9, 0xb1, 0x6d, 0x23, 0xc8, 0xe5, 0xf4, 0x70}};

} // namespace

HRESULT MakeSource(std::unique_ptr<source::ByteSource> bytes, source::OpenedSource& opened) {
    return ComGuard([&] {
        bytes = std::make_unique<source::BufferedSource>(std::move(bytes));
        std::optional<AviFile> file = ReadAviFile(*bytes);
        if (!file) {
            return static_cast<HRESULT>(VFW_E_INVALID_FILE_FORMAT);
        }
        auto reader = std::make_unique<AviReader>(std::move(bytes), std::move(*file));
        return source::CSourceFilter::Make(std::move(reader), kAviSourceClassId, opened);
    });
}

HRESULT OpenSource(const WideString& path, source::OpenedSource& opened) {
    return ComGuard([&] {
        auto bytes = std::make_unique<source::FileSource>();
        const HRESULT hr = bytes->Open(path);
        return FAILED(hr) ? hr : MakeSource(std::move(bytes), opened);
    });
}

} // namespace avi
