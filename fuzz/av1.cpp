// AV1: bytes as an IVF file and as a stream of units, and as a sample, a sequence header and a configuration record.
#include <algorithm>
#include <vector>

#include "codecs/av1_configuration.h"
#include "codecs/av1_obu.h"
#include "codecs/av1_units.h"
#include "fuzz/read_all.h"
#include "fuzz/require.h"
#include "sources/av1/av1_source.h"

namespace {

using fuzz::Require;
using Bytes = std::vector<std::uint8_t>;

void Read(std::unique_ptr<source::PacketReader> reader, size_t size) {
    if (reader) {
        fuzz::ReadAll(reader.get(), size);
    }
}

// A record is built from itself once more as the same bytes, and so is a clean sample.
void Build(codecs::ByteView bytes) {
    if (const std::optional<Bytes> record = codecs::BuildAv1Configuration(bytes)) {
        Require(codecs::BuildAv1Configuration(*record) == record);
    }
    const Bytes clean = codecs::CleanAv1Units(bytes);
    Require(codecs::CleanAv1Units(clean) == clean);
    Bytes room(bytes.begin(), bytes.end());
    if (const auto kept = codecs::CleanAv1UnitsInPlace(room)) {
        Require(std::ranges::equal(*kept, clean));
    }
    (void)codecs::RandomAccessOfAv1(bytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    Read(av1::MakeIvfReader(fuzz::SourceOf(data, size)), size);
    Read(av1::MakeObuReader(fuzz::SourceOf(data, size), annexb::FrameRate()), size);
    Build({data, size});
    return 0;
}
