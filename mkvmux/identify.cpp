#include "mkvmux/identify.h"

#include "mkvmux/filter_graph.h"
#include "mkvmux/identify_json.h"
#include "mkvmux/media_type_text.h"
#include "mkvmux/text.h"
#include "mkvmux/written_codec.h"

namespace mkvmux {

std::string DescribeStream(const SourceStream& stream, bool isStrict) {
    if (!stream.HasType()) {
        return stream.problem.empty() ? "no media type is offered: no codec" : stream.problem;
    }
    const std::string codec = WrittenCodecId(stream.type, isStrict);
    return DescribeMediaType(stream.type) + ": " + (codec.empty() ? "no codec" : codec) +
           (stream.ownReader ? " (own " + stream.readerName + " reader)" : "");
}

namespace {

std::string IdentificationAsText(const std::vector<IdentifiedInput>& inputs, bool isStrict) {
    std::string text;
    for (const IdentifiedInput& input : inputs) {
        text += Utf8FromWide(input.path) + "\n";
        for (const SourceStream& stream : input.streams) {
            text += "  track " + std::to_string(stream.number) + " (" + Shown(stream.pinName) +
                    "): " + DescribeStream(stream, isStrict) + "\n";
        }
    }
    return text;
}

} // namespace

std::string Identify(const Options& options) {
    const win::ComPtr<IGraphBuilder> graph = CreateFilterGraph();
    SourceStreams sources(graph.Get());
    sources.UseFrameRate(options.frameRate);
    std::vector<IdentifiedInput> inputs;
    size_t number = 0;
    for (const InputOptions& input : options.inputs) {
        inputs.push_back({input.path, sources.Open(input.path)});
        for (SourceStream& stream : inputs.back().streams) {
            stream.number = number++;
        }
    }
    return options.json ? IdentificationAsJson(inputs, options.strict) : IdentificationAsText(inputs, options.strict);
}

} // namespace mkvmux
