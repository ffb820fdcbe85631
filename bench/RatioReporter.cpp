#include "bench/RatioReporter.h"

#include <cstdio>

#include <unistd.h>

RatioReporter::RatioReporter() : ConsoleReporter(isatty(STDOUT_FILENO) ? OO_Defaults : OO_Tabular) {}

void RatioReporter::ReportRuns(const std::vector<Run>& runs)
{
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        // With --benchmark_repetitions the mean (reported after the
        // repetitions) replaces the single runs.
        const bool mean = run.run_type == Run::RT_Aggregate && run.aggregate_name == "mean";
        if (run.run_type != Run::RT_Iteration && !mean) {
            continue;
        }
        const auto rate = run.counters.find("bytes_per_second");
        if (rate != run.counters.end()) {
            const std::string& name = run.run_name.function_name;
            if (m_Throughput.count(name) == 0) {
                m_Order.push_back(name);
            }
            m_Throughput[name] = rate->second.value;
        }
    }
}

// Pairs "Simple/<doc>" with "Expat/<doc>".
void RatioReporter::Finalize()
{
    ConsoleReporter::Finalize();
    std::printf("\n%-32s %12s %12s %8s\n", "document", "simple MB/s", "expat MB/s", "ratio");
    for (const std::string& name : m_Order) {
        const double simpleRate = m_Throughput[name];
        const std::string prefix = "ParseSimple/";
        if (name.compare(0, prefix.size(), prefix) != 0) {
            continue;
        }
        const std::string document = name.substr(prefix.size());
        const auto expat = m_Throughput.find("ParseExpat/" + document);
        if (expat == m_Throughput.end() || expat->second <= 0) {
            continue;
        }
        std::printf("%-32s %12.1f %12.1f %8.2f\n", document.c_str(), simpleRate / 1e6, expat->second / 1e6,
                    simpleRate / expat->second);
    }
}
