// AVI files.
#include "fuzz/read_all.h"
#include "sources/avi/avi_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    auto bytes = fuzz::SourceOf(data, size);
    if (auto file = avi::ReadAviFile(*bytes)) {
        avi::AviReader reader(std::move(bytes), std::move(*file));
        fuzz::ReadAll(&reader, size);
    }
    return 0;
}
