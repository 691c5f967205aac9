// SubRip, SSA, ASS and WebVTT: the same bytes as each.
#include "fuzz/read_all.h"
#include "fuzz/require.h"
#include "sources/base/printable.h"
#include "sources/text/ass_parser.h"
#include "sources/text/srt_parser.h"
#include "sources/text/text_source.h"
#include "sources/text/vtt_parser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    const auto bytes = fuzz::SourceOf(data, size);
    fuzz::ReadAll(subtitles::MakeReader(*bytes, subtitles::ParseSrt).get(), size);
    fuzz::ReadAll(subtitles::MakeReader(*bytes, subtitles::ParseAss).get(), size);
    fuzz::ReadAll(subtitles::MakeReader(*bytes, subtitles::ParseVtt).get(), size);
    // What is shown is never shown otherwise the second time.
    const std::string shown = source::Printable({reinterpret_cast<const char*>(data), size});
    fuzz::Require(source::Printable(shown, shown.size() + 1) == shown);
    return 0;
}
