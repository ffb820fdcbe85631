// One run of the utility: its construction performs the run, its destruction
// releases everything in a fixed order (configurator, record, arguments).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "app/OptionParsing.h"

class CertificateInventory;
class WirelessConfigurator;

// Exit status of a run whose settings or packet file could not be read.
constexpr int kInputFileError = 2;
// Exit status of a run whose standard output could not be written, whatever
// the mode's own result (EX_IOERR of sysexits.h).
constexpr int kOutputError = 74;

class Application {
public:
    Application(int argc, const char* const* argv);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    int getResult() const { return m_Result; }
    static int printUsage();

private:
    int run();
    // Fills m_Config as the mode asks; returns false when an input file named
    // on the command line is missing or cannot be read (already reported).
    bool fillConfig();
    int dispatch();
    int sendRawPacket();

    int32_t m_Argc;
    std::vector<std::string> m_Args;
    std::string m_Mode;
    std::unique_ptr<ConfigDetails> m_Config;
    std::unique_ptr<CertificateInventory> m_Certificates;  // what the configurator asks
    std::unique_ptr<WirelessConfigurator> m_Configurator;
    int32_t m_Result = 0;
};

// Process entry: prints the usage text without arguments, otherwise runs the
// mode. Returns the exit status: the result's low eight bits, or
// kOutputError when standard output could not be written.
int runCorvelcfg(int argc, const char* const* argv);
