// Matroska and WebM files; and the same bytes as a block in each lacing, which few changes of a file reach.
#include "codecs/lacing.h"
#include "fuzz/read_all.h"
#include "fuzz/require.h"
#include "sources/matroska/matroska_reader.h"

namespace {

// The frames follow each other, up to the payload's end.
void CheckLacing(codecs::ByteView payload, std::uint8_t lacing) {
    const auto frames = codecs::TakeFramesApart(payload, lacing);
    if (!frames || payload.empty()) {
        return;
    }
    const std::uint8_t* next = frames->front().data();
    for (const codecs::ByteView frame : *frames) {
        fuzz::Require(frame.data() == next);
        next += frame.size();
    }
    fuzz::Require(next == payload.data() + payload.size() && frames->front().data() >= payload.data());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    for (const std::uint8_t lacing : {0, 2, 4, 6}) {
        CheckLacing({data, size}, lacing);
    }
    auto bytes = fuzz::SourceOf(data, size);
    if (auto file = matroska::ReadMatroskaFile(*bytes)) {
        matroska::MatroskaReader reader(std::move(bytes), std::move(*file));
        std::vector<std::string> leftOut;
        (void)reader.ReadAttachments(leftOut);
        fuzz::ReadAll(&reader, size);
    }
    return 0;
}
