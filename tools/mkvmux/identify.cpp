#include "tools/mkvmux/identify.h"

#include "mkv/codec_description.h"
#include "tools/mkvmux/filter_graph.h"
#include "tools/mkvmux/media_type_text.h"
#include "tools/mkvmux/text.h"

namespace mkvmux {

std::string DescribeStream(const SourceStream& stream) {
    if (!stream.HasType()) {
        return "no media type is offered: no codec";
    }
    const std::string codec = mkv::CodecIdOf(stream.type);
    return DescribeMediaType(stream.type) + ": " + (codec.empty() ? "no codec" : codec) +
           (stream.ownReader ? " (own AVI reader)" : "");
}

std::string Identify(const Options& options) {
    const win::ComPtr<IGraphBuilder> graph = CreateFilterGraph();
    SourceStreams sources(graph.Get());
    std::string text;
    size_t number = 0;
    for (const InputOptions& input : options.inputs) {
        text += Utf8FromWide(input.path) + "\n";
        for (const SourceStream& stream : sources.Open(input.path)) {
            text += "  track " + std::to_string(number++) + " (" + Utf8FromWide(stream.pinName) +
                    "): " + DescribeStream(stream) + "\n";
        }
    }
    return text;
}

} // namespace mkvmux
