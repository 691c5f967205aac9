#include "mkvmux/mux_graph.h"

#include "mkvmux/failure.h"
#include "mkvmux/filter_graph.h"
#include "mkvmux/graph_walk.h"
#include "mkvmux/media_type_text.h"
#include "mkvmux/text.h"
#include "mkvmux/written_codec.h"

namespace mkvmux {

MuxGraph::MuxGraph(win::ComPtr<IBaseFilter> muxer)
    : m_graph(CreateFilterGraph()), m_muxer(std::move(muxer)), m_sink(CFileSinkFilter::Make()),
      m_sources(m_graph.Get()) {
    AddToGraph(m_muxer.Get(), L"Muxer");
    AddToGraph(m_sink.Get(), L"File sink");
}

// The filters leave the graph while everybody is still there: one that stays connected would keep its peer.
MuxGraph::~MuxGraph() {
    m_streams.clear();
    m_skipped.clear();
    m_graph->RemoveFilter(m_sink.Get());
    m_graph->RemoveFilter(m_muxer.Get());
}

void MuxGraph::AddToGraph(IBaseFilter* filter, const wchar_t* name) {
    if (const HRESULT hr = m_graph->AddFilter(filter, name); FAILED(hr)) {
        throw Failure("the filter graph cannot be built: " + DescribeResult(hr));
    }
}

void MuxGraph::AddInput(const std::wstring& path, const std::set<size_t>& disabled) {
    for (SourceStream& stream : m_sources.Open(path)) {
        stream.number = StreamCount();
        if (disabled.contains(stream.number) && !CanBeWritten(stream)) {
            m_skipped.push_back(std::move(stream));
        } else {
            AddStream(std::move(stream));
        }
    }
}

bool MuxGraph::CanBeWritten(const SourceStream& stream) const {
    const win::ComPtr<IPin> input = FreePinOf(m_muxer.Get(), PINDIR_INPUT);
    return stream.HasType() && input && input->QueryAccept(&stream.type) == S_OK &&
           !WrittenCodecId(stream.type, m_isStrict).empty();
}

std::string MuxGraph::WhyNotConnected(IPin& input, const AM_MEDIA_TYPE& type, HRESULT hr) const {
    if (input.QueryAccept(&type) == S_OK) {
        return ": cannot be connected to the muxer: " + DescribeResult(hr);
    }
    const bool wouldTake = WrittenCodecId(type, m_isStrict).empty() && !WrittenCodecId(type, true).empty();
    return wouldTake ? ": compatible files do not hold this type; --profile strict writes it"
                     : ": the muxer does not take this type";
}

void MuxGraph::AddStream(SourceStream stream) {
    if (!stream.HasType()) {
        throw Failure(stream.problem.empty()
                          ? stream.Name() + ": the splitter does not know its codec and offers no media type"
                          : "track " + std::to_string(stream.number) + ": " + stream.problem + " (" + stream.Name() +
                                "; --disable " + std::to_string(stream.number) + " leaves it out)");
    }
    const std::string described = stream.Name() + " (" + DescribeMediaType(stream.type) + ")";
    const win::ComPtr<IPin> input = FreePinOf(m_muxer.Get(), PINDIR_INPUT);
    if (!input) {
        throw Failure(described + ": the muxer has no free input");
    }
    if (const HRESULT hr = m_graph->ConnectDirect(stream.pin.Get(), input.Get(), nullptr); FAILED(hr)) {
        throw Failure(described + WhyNotConnected(*input.Get(), stream.type, hr));
    }
    CMediaType agreed;
    if (SUCCEEDED(stream.pin->ConnectionMediaType(&agreed))) {
        stream.type = agreed;
    }
    if (WrittenCodecId(stream.type, m_isStrict).empty()) {
        throw Failure(described + ": Matroska has no codec identifier for this type");
    }
    m_streams.push_back(std::move(stream));
}

void MuxGraph::ConnectSink() {
    const win::ComPtr<IPin> from = FreePinOf(m_muxer.Get(), PINDIR_OUTPUT);
    const win::ComPtr<IPin> to = FreePinOf(m_sink.Get(), PINDIR_INPUT);
    const HRESULT connected = from && to ? m_graph->ConnectDirect(from.Get(), to.Get(), nullptr) : E_FAIL;
    if (FAILED(connected)) {
        throw Failure("the muxer's output cannot be connected: " + DescribeResult(connected));
    }
}

void MuxGraph::OpenOutput(const std::wstring& path, bool overwrite) {
    ConnectSink();
    if (const HRESULT hr = m_sink->CreateFileOnDisk(path, overwrite); FAILED(hr)) {
        throw Failure(Utf8FromWide(path) + ": cannot be created: " + DescribeResult(hr));
    }
}

void MuxGraph::WriteTo(win::FileHandle pipe) {
    ConnectSink();
    m_sink->WriteTo(std::move(pipe));
}

} // namespace mkvmux
