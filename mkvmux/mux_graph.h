// MuxGraph: sources and splitters of the inputs, the muxer, and behind it a file sink.
//
// Owner: holds the graph; the muxer's module must outlive it. Threads: one. Errors: Failure.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "mkvmux/file_sink_filter.h"
#include "mkvmux/source_streams.h"
#include "win/com_ptr.h"
#include "win/platform.h"

namespace mkvmux {

class MuxGraph {
  public:
    explicit MuxGraph(win::ComPtr<IBaseFilter> muxer);
    ~MuxGraph();
    MuxGraph(const MuxGraph&) = delete;
    MuxGraph& operator=(const MuxGraph&) = delete;

    // Of the inputs to come that do not say.
    void UseFrameRate(const annexb::FrameRate& rate) { m_sources.UseFrameRate(rate); }
    // Strict or compatible, of the file to be written.
    void UseProfile(bool isStrict) {
        m_isStrict = isStrict;
        m_sources.UseExactTimes(isStrict);
    }
    // Connects every stream of the file to an input of the muxer, in order. A stream that cannot be written is
    // skipped when it is disabled, and a Failure otherwise.
    void AddInput(const std::wstring& path, const std::set<size_t>& disabled = {});
    // Connects one stream to the muxer's next free input.
    void AddStream(SourceStream stream);
    // Creates the file and puts it behind the muxer; to be called last, so that what fails before leaves no file.
    void OpenOutput(const std::wstring& path, bool overwrite);
    // Instead of that: into what is open already and cannot seek.
    void WriteTo(win::FileHandle pipe);

    // Each at the index of its input of the muxer.
    [[nodiscard]] const std::vector<SourceStream>& Streams() const { return m_streams; }
    [[nodiscard]] const std::vector<SourceStream>& SkippedStreams() const { return m_skipped; }
    // How many streams the inputs have, the skipped ones included.
    [[nodiscard]] size_t StreamCount() const { return m_streams.size() + m_skipped.size(); }
    // What the inputs carry besides streams.
    [[nodiscard]] const std::vector<source::Attachment>& Attachments() const { return m_sources.Attachments(); }
    [[nodiscard]] const std::vector<source::Chapter>& Chapters() const { return m_sources.Chapters(); }
    [[nodiscard]] const std::vector<source::Tag>& Tags() const { return m_sources.Tags(); }
    [[nodiscard]] const std::wstring& InputTitle() const { return m_sources.Title(); }
    [[nodiscard]] const std::vector<std::string>& InputWarnings() const { return m_sources.Warnings(); }
    [[nodiscard]] std::vector<std::string> Damages() const { return m_sources.Damages(); }
    [[nodiscard]] const win::ComPtr<IGraphBuilder>& Graph() const { return m_graph; }
    [[nodiscard]] const win::ComPtr<IBaseFilter>& Muxer() const { return m_muxer; }
    [[nodiscard]] const CFileStream& Output() const { return m_sink->Stream(); }
    [[nodiscard]] CFileStream& Output() { return m_sink->Stream(); }

  private:
    void ConnectSink();
    void AddToGraph(IBaseFilter* filter, const wchar_t* name);
    [[nodiscard]] bool CanBeWritten(const SourceStream& stream) const;
    [[nodiscard]] std::string WhyNotConnected(IPin& input, const AM_MEDIA_TYPE& type, HRESULT hr) const;

    win::ComPtr<IGraphBuilder> m_graph;
    win::ComPtr<IBaseFilter> m_muxer;
    win::ComPtr<CFileSinkFilter> m_sink;
    SourceStreams m_sources;
    std::vector<SourceStream> m_streams;
    std::vector<SourceStream> m_skipped;
    bool m_isStrict = false;
};

} // namespace mkvmux
