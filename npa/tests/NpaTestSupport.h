// Test doubles for the NPA code: a configurator on the scripted transport and
// output capture.
#pragma once

#include <memory>
#include <string>

#include "npa/WirelessConfigurator.h"
#include "tests/support/CaptureOutput.h"
#include "tests/support/FakeClock.h"
#include "tests/support/FakeCommTransport.h"

#include <gtest/gtest.h>

// A configurator on a fake transport and a fake clock; its password prompt
// answers "typed" and counts the prompts.
struct ConfiguratorUnderTest {
    explicit ConfiguratorUnderTest(ConfigDetails details = ConfigDetails())
        : config(std::move(details)), configurator(config, std::make_unique<NPAChannel>(config.usbPath, transport))
    {
        configurator.setPasswordSource([this] { return ++passwordPrompts, std::string("typed"); });
    }

    ScopedFakeClock clock;
    ConfigDetails config;
    FakeCommTransport transport;
    WirelessConfigurator configurator;
    int passwordPrompts = 0;
};
