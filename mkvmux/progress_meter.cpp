#include "mkvmux/progress_meter.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "client/module_config.h"
#include "mkvmux/progress_display.h"

namespace mkvmux {

namespace {

constexpr double kMostBeforeTheEndPercent = 99;

// What the muxer has written so far; 0 when it does not tell.
REFERENCE_TIME PositionOf(const win::ComPtr<IBaseFilter>& muxer) {
    REFERENCE_TIME position = 0;
    (void)client::ModuleConfig(muxer.Get()).GetPosition(position);
    return position;
}

UINT64 SizeOf(const std::wstring& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

} // namespace

ProgressMeter::ProgressMeter(const MuxGraph& graph) : m_graph(graph) {
    std::set<std::wstring> inputs;
    for (const SourceStream& stream : graph.Streams()) {
        m_duration = std::max(m_duration, stream.Duration());
        if (inputs.insert(stream.input).second) {
            m_inputBytes += SizeOf(stream.input);
        }
    }
}

int ProgressMeter::Percent() const {
    double share = 0;
    const REFERENCE_TIME position = m_duration > 0 ? PositionOf(m_graph.Muxer()) : 0;
    if (position > 0) {
        share = static_cast<double>(position) / static_cast<double>(m_duration);
    } else if (m_inputBytes > 0) {
        share = static_cast<double>(m_graph.Output().WrittenEnd()) / static_cast<double>(m_inputBytes);
    }
    return static_cast<int>(std::clamp(share * kWholePercent, 0.0, kMostBeforeTheEndPercent));
}

} // namespace mkvmux
