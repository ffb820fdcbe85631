// The simulated printer's network life: the settings it holds, whether it has
// joined the configured network, and the values its fields read back.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "sim/printer/CertStore.h"
#include "sim/printer/X509Tools.h"
#include "sim/wire/Request.h"

namespace corvelsim {

struct NetworkLife {
    int joinAfterPolls = 1;   // connection polls answered before it reports joined
    int readyAfterPolls = 1;  // 06/1F polls answered before it reports 0x2D
    std::array<uint8_t, 4> address{192, 168, 1, 57};
};

// Group and field packed as one key (0x2808 for 28/08).
constexpr unsigned fieldKey(uint8_t group, uint8_t field) { return (unsigned(group) << 8) | field; }

class PrinterState {
public:
    explicit PrinterState(NetworkLife life = {});

    // Stores accepted setting items. New network settings drop the connection;
    // the reset item (06/14 = 1) resets the network interface.
    void applySettings(const std::vector<Item>& items);

    // The value a read of group/field answers with; polls of the connection
    // state (28/15) and of 06/1F move the printer's life forward. Empty when
    // the printer has no value for the field.
    Bytes readField(uint8_t group, uint8_t field);

    // True when SSID and the secret its security needs are present.
    bool settingsComplete() const;
    unsigned security() const;

    // What is kept between runs (see StateFile).
    std::map<unsigned, Bytes> items;
    bool joined = false;
    int connectionPolls = 0;
    int readyPolls = 0;
    int resets = 0;
    CertStore certs;
    Subject defaultSubject;  // what readCertDefaults answers

private:
    bool hasValue(unsigned key) const;
    Bytes authStatusValue() const;
    Bytes certSubjectField(unsigned key) const;
    void dropConnection();

    NetworkLife m_Life;
};

// Printer defaults for a factory-fresh simulated printer.
PrinterState factoryState(NetworkLife life);

}  // namespace corvelsim
