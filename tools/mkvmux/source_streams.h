// SourceStreams: adds the source and the splitters of a file to a graph and finds the streams that they offer.
//
// Owner: the graph owns the filters; a stream holds a reference on its pin. Errors: Failure.
#pragma once

#include <string>
#include <vector>

#include "dshow/media_type.h"
#include "win/com_ptr.h"
#include "win/platform.h"

namespace mkvmux {

struct SourceStream {
    std::wstring input;
    std::wstring pinName;
    win::ComPtr<IPin> pin;
    // The first that the pin offers; a major type of GUID_NULL when it offers none.
    CMediaType type;
    // Read by our own AVI source, since the system's splitter cannot stream the file.
    bool ownReader = false;

    // "a.avi: stream 'Stream 00'", for messages.
    [[nodiscard]] std::string Name() const;
    [[nodiscard]] bool HasType() const { return type.majortype != GUID_NULL; }
};

class SourceStreams {
  public:
    explicit SourceStreams(IGraphBuilder* graph);

    // The streams of the file in the order of the splitter's pins, still unconnected and compressed as they are.
    [[nodiscard]] std::vector<SourceStream> Open(const std::wstring& path);

  private:
    [[nodiscard]] std::vector<SourceStream> OpenWithSystem(const std::wstring& path);
    [[nodiscard]] std::vector<SourceStream> OpenWith(IBaseFilter* source, const std::wstring& path);
    void RemoveFilters();
    void Collect(IBaseFilter* filter, const std::wstring& path, int depth, std::vector<SourceStream>& streams);
    [[nodiscard]] win::ComPtr<IBaseFilter> AttachSplitter(IPin* pin);
    [[nodiscard]] win::ComPtr<IBaseFilter> TryCandidates(IPin* pin, const AM_MEDIA_TYPE& type);
    [[nodiscard]] bool TrySplitter(IPin* pin, IBaseFilter* splitter);

    win::ComPtr<IGraphBuilder> m_graph;
    win::ComPtr<IFilterMapper2> m_mapper;
    std::vector<win::ComPtr<IBaseFilter>> m_filters; // added for the file that is being opened
};

} // namespace mkvmux
