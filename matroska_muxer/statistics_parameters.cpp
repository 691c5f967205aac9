#include "matroska_muxer/statistics_parameters.h"

#include <algorithm>
#include <cstring>

#include "matroska_muxer/muxer_parameters.h"
#include "mkv/mkv_writer.h"
#include "mux/mux_statistics.h"

namespace {

// The records as they were first published; who knows less of them is too short.
constexpr UINT32 kLeastFileBytes = 56;
constexpr UINT32 kLeastInputBytes = 88;

UINT32 SizeOf(const void* record) {
    UINT32 size = 0;
    std::memcpy(&size, record, sizeof(size));
    return size;
}

// As much as both know.
template <typename Record>
void Fill(void* to, Record from) {
    from.size = std::min(SizeOf(to), static_cast<UINT32>(sizeof(Record)));
    std::memcpy(to, &from, from.size);
}

MuxInputStatistics RecordOf(INT32 index, const CMuxStatistics::Input& input) {
    MuxInputStatistics record{};
    record.index = index;
    record.packets = input.stream.packets;
    record.bytes = input.stream.bytes;
    record.queuedPackets = input.stream.queuedPackets;
    record.queuedBytes = input.stream.queuedBytes;
    record.queueLimit = input.queueLimitBytes;
    record.queuePeak = input.stream.queuePeakBytes;
    record.lastPacket = input.stream.lastStart;
    record.dropped = input.refused + input.stream.lost;
    record.late = input.stream.late;
    record.silences = input.stream.silences;
    record.isSilent = input.stream.isSilent ? 1 : 0;
    return record;
}

} // namespace

HRESULT GetStatistics(const ParameterTargets& targets, VARIANT& value) {
    void* const record = V_BYREF(&value);
    if (record == nullptr) {
        return E_POINTER;
    }
    if (SizeOf(record) < kLeastFileBytes) {
        return E_INVALIDARG;
    }
    const mkv::CWriteFigures::Figures written = targets.writes.get();
    const CMuxStatistics::Run run = targets.statistics.GetRun();
    MuxStatistics figures{};
    figures.isRunning = run.isRunning ? 1 : 0;
    figures.bytesWritten = written.bytes;
    figures.writes = written.writes;
    figures.clusters = targets.writer.writtenClusters();
    figures.writeTime = written.time;
    figures.longestWrite = written.longest;
    figures.elapsed = run.elapsed;
    Fill(record, figures);
    return S_OK;
}

HRESULT GetInputStatistics(const ParameterTargets& targets, VARIANT& value) {
    void* const record = V_BYREF(&value);
    if (record == nullptr) {
        return E_POINTER;
    }
    if (SizeOf(record) < kLeastInputBytes) {
        return E_INVALIDARG;
    }
    const INT32 index = static_cast<const MuxInputStatistics*>(record)->index;
    const auto input = targets.statistics.Of(index);
    if (!input) {
        return E_INVALIDARG;
    }
    Fill(record, RecordOf(index, *input));
    return S_OK;
}
