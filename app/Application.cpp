// The run driver: fills the record as the mode asks, hands the mode to the
// wireless configurator or the certificate processor, and keeps the result.
#include "app/Application.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "app/StandardStreams.h"
#include "cert/CertMgrInventory.h"
#include "cert/CertProc.h"
#include "npa/WirelessConfigurator.h"
#include "transport/HexDump.h"

namespace {

// Modes whose values come from options or a settings file.
bool takesSettings(const std::string& mode)
{
    return mode == "-c" || mode == "-ca" || mode == "-cer" || mode == "-icer" || mode == "-rcerdefs" || mode == "-csr";
}

bool isCertificateCommand(const std::string& mode) { return mode == "-icer" || mode == "-rcerdefs" || mode == "-csr"; }

struct ModeEntry {
    const char* mode;
    int (WirelessConfigurator::*operation)();
    // A refused first attempt (-1) is repeated once with plain packets.
    bool retryPlain;
};

const ModeEntry kModeTable[] = {
    {"-r", &WirelessConfigurator::resetPrinter, false},
    {"-c", &WirelessConfigurator::basicConfig, true},
    {"-ca", &WirelessConfigurator::advancedConfig, true},
    {"-ip", &WirelessConfigurator::getIPAddress, true},
    {"-t", &WirelessConfigurator::waitForConnection, true},
    {"-a", &WirelessConfigurator::pollDeviceStatus, false},
    {"-s", &WirelessConfigurator::showSSID, true},
    {"-802s", &WirelessConfigurator::queryAuthStatus, true},
    {"-cer", &WirelessConfigurator::queryCertSettings, true},
};

}  // namespace

Application::Application(int argc, const char* const* argv) : m_Argc(argc)
{
    for (int i = 0; i < argc; ++i) m_Args.emplace_back(argv[i] != nullptr ? argv[i] : "");
    m_Mode = m_Args.size() > 1 ? m_Args[1] : std::string();
    m_Config = std::make_unique<ConfigDetails>();
    m_Result = run();
}

Application::~Application()
{
    // The configurator gives its transport reference back before the record
    // it reads from goes away.
    m_Configurator.reset();
    m_Certificates.reset();
    m_Config.reset();
}

int Application::run()
{
    if (!fillConfig()) return kInputFileError;

    if (isCertificateCommand(m_Mode)) {
        CertProc processor;
        return processor.process(m_Mode, *m_Config);
    }

    // Binds the configurator to the record; no device is opened yet.
    m_Certificates = std::make_unique<CertMgrInventory>();
    m_Configurator = std::make_unique<WirelessConfigurator>(*m_Config, *m_Certificates);
    return dispatch();
}

bool Application::fillConfig()
{
    const bool fileForm = m_Argc > 2 && m_Args[2] == "-file";
    const bool fileNamed = m_Argc > 3;

    if (takesSettings(m_Mode)) {
        if (!fileForm) return parseArguments(*m_Config, m_Argc, m_Args) == 0;
        if (!fileNamed) {
            std::fprintf(stderr, "D [CVL] -file needs the name of a settings file!\n");
            return false;
        }
        const std::string& fileName = m_Args[3];
        const std::string usbPath = m_Argc > 4 ? m_Args[4] : kDefaultUsbPath;
        if (readConfigFile(*m_Config, fileName, usbPath) != 0) {
            std::fprintf(stderr, "D [CVL] Cannot read settings file '%s': %s\n", fileName.c_str(),
                         std::strerror(errno));
            return false;
        }
        return true;
    }

    if (m_Mode == "-npa") {
        if (!fileForm) return true;
        if (!fileNamed) {
            std::fprintf(stderr, "D [CVL] -file needs the name of a packet file!\n");
            return false;
        }
        findUsbPath(m_Config->usbPath, m_Argc, m_Args);
        // A packet file that cannot be opened leaves no digits: nothing is
        // printed and an empty packet goes out, as before any file was known.
        // One too large to be a packet file is refused.
        if (readNpaFile(*m_Config, m_Args[3]) == -2) {
            std::fprintf(stderr, "D [CVL] Cannot read packet file '%s': %s\n", m_Args[3].c_str(), std::strerror(errno));
            return false;
        }
        return true;
    }

    return findUsbPath(m_Config->usbPath, m_Argc, m_Args) == 0;
}

int Application::dispatch()
{
    if (m_Mode == "-h") return printUsage();
    for (const ModeEntry& entry : kModeTable) {
        if (m_Mode != entry.mode) continue;
        WirelessConfigurator& configurator = *m_Configurator;
        int result = (configurator.*entry.operation)();
        if (entry.retryPlain && result == -1) {
            configurator.setPassThrough(false);
            result = (configurator.*entry.operation)();
        }
        return result;
    }

    if (m_Mode == "-npa") return sendRawPacket();

    // Any other first argument runs the full configuration; its outcome is
    // shown to the user on the way, the run itself always succeeds.
    m_Configurator->configurePrinter();
    return 0;
}

int Application::sendRawPacket()
{
    uint8_t* bytes = nullptr;
    const int32_t count = hexToBytes(m_Config->npaData.c_str(), &bytes);
    std::fprintf(stderr, "D [CVL] NPA data: %d bytes\n", count);
    hexDump(bytes, count);
    const int result = m_Configurator->sendNPA(bytes, count, 10);
    delete[] bytes;
    return result;
}

int runCorvelcfg(int argc, const char* const* argv)
{
    holdClosedStandardDescriptors();
    int result;
    if (argc <= 1) {
        result = Application::printUsage();
    } else {
        Application application(argc, argv);
        result = application.getResult();
    }
    // Standard output carries what the user asked for: a run whose output
    // could not be written (a full disk, a closed descriptor) has failed.
    return outputWritten() ? result & 0xFF : kOutputError;
}
