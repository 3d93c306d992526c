// What the tests of the embosser link share: a UIConfig attached to a test printer, a
// simulator that must start, and the PJL bytes the printer receives. Programs
// that include it link the simulator's core.
#pragma once

#include <winsock2.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "config/ui_config.h"
#include "embosser_simulator.h"
#include "support/wine_environment.h"

namespace devicetest {

// One "@PJL DEFAULT" command and the commit, as the printer receives them.
inline std::string Default(const std::string& setting) { return "\x1b%-12345X@PJL DEFAULT " + setting + "\r\n"; }
inline const std::string kServiceUpdate = "\x1b%-12345X@PJL SERVICE UPDATE\r\n";

// A zero-filled record of the printer, as CreateConfig leaves it before any device read.
inline std::unique_ptr<UIConfig> ConfigFor(const testenv::TestPrinter& printer) {
    auto config = std::make_unique<UIConfig>();  // value-initialised: every byte 0
    config->Size = sizeof(UIConfig);
    config->PrinterHandle = printer.handle();
    wcsncpy(config->PrinterName, printer.name().c_str(), kTextCapacity - 1);
    return config;
}

// An embosser on port 80 of `address` (loopback); an empty reply is the simulator's sample.
inline embosser_sim::Options Simulating(const char* address, embosser_sim::Behaviour behaviour,
                                        std::string reply = std::string()) { return {address, 80, behaviour, reply}; }

// A simulator that is running when this returns.
inline std::unique_ptr<embosser_sim::Simulator> StartSimulator(const embosser_sim::Options& options) {
    auto simulator = std::make_unique<embosser_sim::Simulator>(options);
    std::string error;
    EXPECT_TRUE(simulator->Start(&error)) << error;
    return simulator;
}

}  // namespace devicetest
