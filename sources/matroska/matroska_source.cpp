#include "sources/matroska/matroska_source.h"

#include "dshow/com_guard.h"
#include "sources/base/buffered_source.h"
#include "sources/base/file_source.h"
#include "sources/base/printable.h"
#include "sources/base/source_filter.h"
#include "sources/matroska/matroska_reader.h"

namespace matroska {

namespace {

// Registered nowhere. {5D1F8B3A-2C64-4E97-B0A8-F3716C94E2D5}
constexpr GUID kMatroskaSourceClassId{0x5d1f8b3a, 0x2c64, 0x4e97, {0xb0, 0xa8, 0xf3, 0x71, 0x6c, 0x94, 0xe2, 0xd5}};

// What a track has and no media type carries.
void TellLosses(const Track& track, std::vector<std::string>& warnings) {
    const std::string name = "stream 'Track " + std::to_string(track.number) + "': ";
    if (!track.isEnabled) {
        warnings.push_back(name + "is marked as not to be used, and goes on as any other");
    }
    const bool carriesAdditions = track.codecId == kWebVttId; // with the text of each cue
    if ((track.maxAdditionId > 0 && !carriesAdditions) || track.hasAlpha) {
        warnings.push_back(name + "what its blocks carry besides the frames, such as an alpha channel, is left out");
    }
}

// On one line, however many there are.
void TellLostAttachments(const std::vector<std::string>& names, bool othersAreLost,
                         std::vector<std::string>& warnings) {
    if (names.empty() && !othersAreLost) {
        return;
    }
    std::string text = "attachments";
    if (!names.empty()) {
        text = "the attachment '" + source::Printable(names.front()) + "'";
        text += names.size() > 1 ? " and " + std::to_string(names.size() - 1) + " more" : "";
        text += othersAreLost ? " and others" : "";
    }
    const bool isOne = names.size() == 1 && !othersAreLost;
    warnings.push_back(text + (isOne ? " is" : " are") + " damaged or too large, and left out");
}

} // namespace

HRESULT MakeSource(std::unique_ptr<source::ByteSource> bytes, source::OpenedSource& opened, TimeRule rule) {
    return ComGuard([&] {
        auto buffered = std::make_unique<source::BufferedSource>(std::move(bytes));
        std::optional<MatroskaFile> file = ReadMatroskaFile(*buffered);
        if (!file) {
            return static_cast<HRESULT>(VFW_E_INVALID_FILE_FORMAT);
        }
        for (const Track& track : file->tracks) {
            TellLosses(track, opened.warnings);
        }
        opened.title = file->title;
        opened.chapters = std::move(file->chapters);
        opened.tags = std::move(file->tags);
        auto reader = std::make_unique<MatroskaReader>(std::move(buffered), std::move(*file), rule);
        std::vector<std::string> leftOut;
        opened.attachments = reader->ReadAttachments(leftOut);
        TellLostAttachments(leftOut, reader->LacksAttachments(), opened.warnings);
        return source::CSourceFilter::Make(std::move(reader), kMatroskaSourceClassId, opened);
    });
}

HRESULT OpenSource(const WideString& path, source::OpenedSource& opened, TimeRule rule) {
    return ComGuard([&] {
        auto bytes = std::make_unique<source::FileSource>();
        const HRESULT hr = bytes->Open(path);
        return FAILED(hr) ? hr : MakeSource(std::move(bytes), opened, rule);
    });
}

} // namespace matroska
