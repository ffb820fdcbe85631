// Console output as usual, then one line per document with the throughput of
// SimpleSAXParser relative to expat from the same run.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter();
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    // Benchmark name -> bytes per second, and the names in the order run.
    std::map<std::string, double> m_Throughput;
    std::vector<std::string> m_Order;
};
