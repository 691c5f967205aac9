#include "sources/av1/av1_source.h"

#include "dshow/com_guard.h"
#include "sources/av1/ivf_reader.h"
#include "sources/av1/obu_reader.h"
#include "sources/base/buffered_source.h"
#include "sources/base/file_source.h"
#include "sources/base/source_filter.h"

namespace av1 {

namespace {

// Registered nowhere. {B4EEB432-979E-4DCF-A41A-26C7C8608B1E}
constexpr GUID kAv1SourceClassId{0xb4eeb432, 0x979e, 0x4dcf, {0xa4, 0x1a, 0x26, 0xc7, 0xc8, 0x60, 0x8b, 0x1e}};

template <typename MakeReader>
HRESULT OpenSource(const WideString& path, const MakeReader& makeReader, source::OpenedSource& opened) {
    return ComGuard([&] {
        auto bytes = std::make_unique<source::FileSource>();
        const HRESULT hr = bytes->Open(path);
        if (FAILED(hr)) {
            return hr;
        }
        std::unique_ptr<source::PacketReader> reader = makeReader(std::move(bytes));
        return reader ? source::CSourceFilter::Make(std::move(reader), kAv1SourceClassId, opened)
                      : static_cast<HRESULT>(VFW_E_INVALID_FILE_FORMAT);
    });
}

} // namespace

std::unique_ptr<source::PacketReader> MakeIvfReader(std::unique_ptr<source::ByteSource> bytes) {
    auto buffered = std::make_unique<source::BufferedSource>(std::move(bytes));
    const std::optional<IvfHeader> header = ReadIvfHeader(*buffered);
    return header ? std::make_unique<IvfReader>(std::move(buffered), *header) : nullptr;
}

std::unique_ptr<source::PacketReader> MakeObuReader(std::unique_ptr<source::ByteSource> bytes,
                                                    const annexb::FrameRate& rate) {
    auto buffered = std::make_unique<source::BufferedSource>(std::move(bytes));
    const std::optional<StreamForm> form = FormOfStream(*buffered);
    auto reader = form ? std::make_unique<ObuReader>(std::move(buffered), *form, rate) : nullptr;
    return reader && reader->HasHeader() ? std::move(reader) : nullptr;
}

HRESULT OpenIvfSource(const WideString& path, source::OpenedSource& opened) {
    return OpenSource(path, MakeIvfReader, opened);
}

HRESULT OpenObuSource(const WideString& path, const annexb::FrameRate& rate, source::OpenedSource& opened) {
    const auto makeReader = [&rate](std::unique_ptr<source::ByteSource> bytes) {
        return MakeObuReader(std::move(bytes), rate);
    };
    return OpenSource(path, makeReader, opened);
}

} // namespace av1
