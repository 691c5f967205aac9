#include "mkvmux/filter_graph.h"

#include "mkvmux/failure.h"
#include "mkvmux/text.h"

namespace mkvmux {

win::ComPtr<IGraphBuilder> CreateFilterGraph() {
    win::ComPtr<IGraphBuilder> graph;
    HRESULT hr = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, graph.PutVoid());
    if (SUCCEEDED(hr)) {
        // Without a clock nobody waits for a sample's time.
        const win::ComPtr<IMediaFilter> mediaFilter = graph.Query<IMediaFilter>(IID_IMediaFilter);
        hr = mediaFilter ? mediaFilter->SetSyncSource(nullptr) : E_NOINTERFACE;
    }
    if (FAILED(hr)) {
        throw Failure("the filter graph cannot be created: " + DescribeResult(hr));
    }
    return graph;
}

} // namespace mkvmux
