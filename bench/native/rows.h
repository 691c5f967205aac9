// The rows of the report that need no Windows program. Each measures and adds what it found.
// Errors: std::runtime_error when something could not be measured.
#pragma once

#include <string>

#include "bench/native/report.h"

namespace bench {

struct NativePlan {
    std::string folder; // where files are written, and overwritten in place
    bool quick = false;
    std::string only; // of the muxers that are compared; all when it is empty
    [[nodiscard]] int Rounds() const { return quick ? 3 : 7; }
    [[nodiscard]] std::string File(const std::string& row, const std::string& run) const {
        return folder + "/" + row + "-" + run + ".mkv";
    }
};

// Against the other muxers.
void MeasureFilm(const NativePlan& plan, Report& report);
void MeasureSmallPackets(const NativePlan& plan, Report& report);
void MeasurePacketSizes(const NativePlan& plan, Report& report);
void MeasureInputs(const NativePlan& plan, Report& report);
// Against ourselves.
void MeasureStartCodes(const NativePlan& plan, Report& report);
void MeasureLengths(const NativePlan& plan, Report& report);
void MeasureMemory(const NativePlan& plan, Report& report);
void MeasureFilters(const NativePlan& plan, Report& report);
void MeasureLiveGraph(const NativePlan& plan, Report& report);
void MeasureFullQueue(const NativePlan& plan, Report& report);

} // namespace bench
