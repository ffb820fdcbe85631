// What the run driver hands its work to: the wireless configurator for every
// NPA mode and the certificate processor for the certificate commands. The
// real targets live in RealRunTargets.cpp; tests put doubles in their place.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "app/ConfigDetails.h"

// The operations of the wireless configurator that the run driver calls.
class ConfiguratorPort {
public:
    virtual ~ConfiguratorPort() = default;
    virtual void setPassThrough(bool passThrough) = 0;
    virtual int basicConfig() = 0;
    virtual int advancedConfig() = 0;
    virtual int configurePrinter() = 0;
    virtual int resetPrinter() = 0;
    virtual int getIPAddress() = 0;
    virtual int waitForConnection() = 0;
    virtual int pollDeviceStatus() = 0;
    virtual int showSSID() = 0;
    virtual int queryAuthStatus() = 0;
    virtual int queryCertSettings() = 0;
    virtual int sendNPA(const uint8_t* bytes, int32_t length, int timeLimitSeconds) = 0;
};

class RunTargets {
public:
    virtual ~RunTargets() = default;
    // Binds a wireless configurator to the record; opens no device.
    virtual std::unique_ptr<ConfiguratorPort> createConfigurator(ConfigDetails& config) = 0;
    // Runs "-icer", "-rcerdefs" or "-csr" and returns its result.
    virtual int processCertificateCommand(const std::string& mode, ConfigDetails& config) = 0;
};

// The targets that talk to a printer.
RunTargets& realRunTargets();
