// The sections of the report. Each measures, prints its table and notes below it what is expected.
// Errors: std::runtime_error when something could not be measured.
#pragma once

#include "bench/bench_plan.h"

namespace bench {

// The first: a process has one peak of memory, and later sections raise it.
void MeasureMemory(const BenchPlan& plan);
void MeasureThroughput(const BenchPlan& plan);
void MeasureFile(const BenchPlan& plan);
void MeasureSystemCalls(const BenchPlan& plan);
void MeasureStreamCalls();
void MeasureStarvedWorker(const BenchPlan& plan);

} // namespace bench
