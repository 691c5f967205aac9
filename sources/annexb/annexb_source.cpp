#include "sources/annexb/annexb_source.h"

#include "dshow/com_guard.h"
#include "sources/base/buffered_source.h"
#include "sources/base/file_source.h"
#include "sources/base/source_filter.h"

namespace annexb {

namespace {

// Registered nowhere. {A17E4C92-6B0D-4D38-9F25-C84B1D7063EA}
constexpr GUID kAnnexBSourceClassId{0xa17e4c92, 0x6b0d, 0x4d38, {0x9f, 0x25, 0xc8, 0x4b, 0x1d, 0x70, 0x63, 0xea}};

} // namespace

HRESULT MakeSource(std::unique_ptr<source::ByteSource> bytes, Codec codec, const FrameRate& rate,
                   source::OpenedSource& opened) {
    return ComGuard([&] {
        auto buffered = std::make_unique<source::BufferedSource>(std::move(bytes));
        PictureIndex index = codec == Codec::Avc ? IndexAvc(*buffered) : IndexHevc(*buffered);
        if (index.pictures.empty()) {
            return static_cast<HRESULT>(VFW_E_INVALID_FILE_FORMAT);
        }
        auto reader = std::make_unique<AnnexBReader>(std::move(buffered), std::move(index), codec, rate);
        return source::CSourceFilter::Make(std::move(reader), kAnnexBSourceClassId, opened);
    });
}

HRESULT OpenSource(const WideString& path, Codec codec, const FrameRate& rate, source::OpenedSource& opened) {
    return ComGuard([&] {
        auto bytes = std::make_unique<source::FileSource>();
        const HRESULT hr = bytes->Open(path);
        return FAILED(hr) ? hr : MakeSource(std::move(bytes), codec, rate, opened);
    });
}

} // namespace annexb
