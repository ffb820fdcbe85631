// Binds the run driver to the real wireless configurator and certificate
// processor.
#include "app/RunTargets.h"
#include "cert/CertProc.h"
#include "npa/WirelessConfigurator.h"

namespace {

class WirelessConfiguratorPort : public ConfiguratorPort {
public:
    explicit WirelessConfiguratorPort(ConfigDetails& config) : m_Configurator(config) {}

    void setPassThrough(bool passThrough) override { m_Configurator.setPassThrough(passThrough); }
    int basicConfig() override { return m_Configurator.basicConfig(); }
    int advancedConfig() override { return m_Configurator.advancedConfig(); }
    int configurePrinter() override { return m_Configurator.configurePrinter(); }
    int resetPrinter() override { return m_Configurator.resetPrinter(); }
    int getIPAddress() override { return m_Configurator.getIPAddress(); }
    int waitForConnection() override { return m_Configurator.waitForConnection(); }
    int pollDeviceStatus() override { return m_Configurator.pollDeviceStatus(); }
    int showSSID() override { return m_Configurator.showSSID(); }
    int queryAuthStatus() override { return m_Configurator.queryAuthStatus(); }
    int queryCertSettings() override { return m_Configurator.queryCertSettings(); }
    int sendNPA(const uint8_t* bytes, int32_t length, int timeLimitSeconds) override
    {
        return m_Configurator.sendNPA(bytes, length, timeLimitSeconds);
    }

private:
    WirelessConfigurator m_Configurator;
};

class PrinterRunTargets : public RunTargets {
public:
    std::unique_ptr<ConfiguratorPort> createConfigurator(ConfigDetails& config) override
    {
        return std::make_unique<WirelessConfiguratorPort>(config);
    }
    int processCertificateCommand(const std::string& mode, ConfigDetails& config) override
    {
        CertProc processor;
        return processor.process(mode, config);
    }
};

}  // namespace

RunTargets& realRunTargets()
{
    static PrinterRunTargets targets;
    return targets;
}
