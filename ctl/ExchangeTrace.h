// The trace of corvelctl's exchanges with the printer (-v, -vv), and the
// memory of the last one, from which a failure is explained.
#pragma once

#include <cstdio>
#include <string>

#include "npa/ExchangeReport.h"

namespace corvelctl {

class ExchangeTrace : public npa::ExchangeObserver {
public:
    // 0: silent; 1: one line per exchange; 2: hex dumps as well, secrets masked.
    // A `label` (the printer, when several run at once) starts every line
    // after "corvelctl: ", or the line itself when it has no such start.
    explicit ExchangeTrace(int verbosity, std::FILE* out = stderr, std::string label = "")
        : m_Verbosity(verbosity), m_Out(out), m_Label(std::move(label))
    {}

    void exchanged(const npa::ExchangeReport& report) override;
    const npa::ExchangeReport& last() const { return m_Last; }
    // How many exchanges so far the printer refused as framed.
    int refusals() const { return m_Refusals; }

    // What an exchange's outcome means, in words ("answered in 3 ms").
    static std::string meaning(const npa::ExchangeReport& report);

private:
    int m_Verbosity;
    std::FILE* m_Out;
    std::string m_Label;
    npa::ExchangeReport m_Last;
    int m_Refusals = 0;
};

}  // namespace corvelctl
