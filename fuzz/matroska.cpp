// Matroska and WebM files.
#include "fuzz/read_all.h"
#include "sources/matroska/matroska_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    auto bytes = fuzz::SourceOf(data, size);
    if (auto file = matroska::ReadMatroskaFile(*bytes)) {
        matroska::MatroskaReader reader(std::move(bytes), std::move(*file));
        std::vector<std::string> leftOut;
        (void)reader.ReadAttachments(leftOut);
        fuzz::ReadAll(&reader, size);
    }
    return 0;
}
