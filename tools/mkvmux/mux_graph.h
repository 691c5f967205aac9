// MuxGraph: sources and splitters of the inputs, the muxer, and behind it a file sink.
//
// Owner: holds the graph; the muxer's module must outlive it. Threads: one. Errors: Failure.
#pragma once

#include <string>
#include <vector>

#include "tools/mkvmux/file_sink_filter.h"
#include "tools/mkvmux/source_streams.h"
#include "win/com_ptr.h"
#include "win/platform.h"

namespace mkvmux {

class MuxGraph {
  public:
    explicit MuxGraph(win::ComPtr<IBaseFilter> muxer);
    ~MuxGraph();
    MuxGraph(const MuxGraph&) = delete;
    MuxGraph& operator=(const MuxGraph&) = delete;

    // Connects every stream of the file to an input of the muxer, in order.
    void AddInput(const std::wstring& path);
    // Connects one stream to the muxer's next free input.
    void AddStream(SourceStream stream);
    void UseDocTypeWebm();
    // Creates the file and puts it behind the muxer; to be called last, so that what fails before leaves no file.
    void OpenOutput(const std::wstring& path, bool overwrite);

    [[nodiscard]] const std::vector<SourceStream>& Streams() const { return m_streams; }
    [[nodiscard]] const win::ComPtr<IGraphBuilder>& Graph() const { return m_graph; }
    [[nodiscard]] const win::ComPtr<IBaseFilter>& Muxer() const { return m_muxer; }
    [[nodiscard]] const CFileStream& Output() const { return m_sink->Stream(); }

  private:
    void AddToGraph(IBaseFilter* filter, const wchar_t* name);

    win::ComPtr<IGraphBuilder> m_graph;
    win::ComPtr<IBaseFilter> m_muxer;
    win::ComPtr<CFileSinkFilter> m_sink;
    SourceStreams m_sources;
    std::vector<SourceStream> m_streams;
};

} // namespace mkvmux
