// bench_native: measures the muxer beside others, in one process, on Linux. Writes JSON; scripts read and judge it.
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <map>
#include <set>

#include "bench/native/rows.h"
#include "bench/stopwatch.h"

namespace {

struct Row {
    const char* name;
    void (*measure)(const bench::NativePlan& plan, bench::Report& report);
};

constexpr Row kRows[] = {
    {"film", bench::MeasureFilm},         {"small", bench::MeasureSmallPackets},    {"inputs", bench::MeasureInputs},
    {"sizes", bench::MeasurePacketSizes}, {"startcodes", bench::MeasureStartCodes}, {"lengths", bench::MeasureLengths},
    {"memory", bench::MeasureMemory},     {"filters", bench::MeasureFilters},       {"live", bench::MeasureLiveGraph},
    {"queue", bench::MeasureFullQueue},
};

int Usage() {
    std::fputs("usage: bench_native RESULT.json FOLDER [--quick] [--only MUXER] [ROW...]\nrows:", stderr);
    for (const Row& row : kRows) {
        std::fprintf(stderr, " %s", row.name);
    }
    std::fputs("\n", stderr);
    return 2;
}

void MeasureRows(const bench::NativePlan& plan, const std::set<std::string>& names, const char* result) {
    bench::Report report;
    for (const Row& row : kRows) {
        if (!names.empty() && names.count(row.name) == 0) {
            continue;
        }
        const bench::Stopwatch watch;
        row.measure(plan, report);
        std::fprintf(stderr, "measured %s in %.1f s\n", row.name, watch.Seconds());
        report.Save(result);
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        return Usage();
    }
    bench::NativePlan plan{.folder = argv[2], .quick = false, .only = {}};
    std::set<std::string> names;
    for (int i = 3; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) {
            plan.quick = true;
        } else if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc) {
            plan.only = argv[++i];
        } else {
            names.insert(argv[i]);
        }
    }
    try {
        MeasureRows(plan, names, argv[1]);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench_native: %s\n", failure.what());
        return 2;
    }
    return 0;
}
