#pragma once
// A console reporter that also remembers each benchmark's time per iteration, so that a benchmark
// program can print its figures as ratios to a raw baseline measured in the same run.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace SetApiBench {

class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration && run.iterations > 0)
                m_seconds[run.benchmark_name()] =
                    run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
        benchmark::ConsoleReporter::ReportRuns(runs);
    }

    // Prints "<what>: <ratio> of <baseline>" where the ratio is baseline time / measured time, so
    // that 1.0 means as fast as the baseline and less means slower.
    void PrintRatio(const std::string& measured, const std::string& baseline) const
    {
        const auto m = m_seconds.find(measured);
        const auto b = m_seconds.find(baseline);
        if (m == m_seconds.end() || b == m_seconds.end() || m->second <= 0)
            return;
        std::printf("ratio %-40s %.3f of %s (%.3f us vs %.3f us)\n", measured.c_str(), b->second / m->second,
                    baseline.c_str(), m->second * 1e6, b->second * 1e6);
    }

private:
    std::map<std::string, double> m_seconds;
};

} // namespace SetApiBench
