// The printer's certificate inventory as its certificate manager tells it.
#pragma once

#include "npa/CertificateInventory.h"

class CertMgrInventory : public CertificateInventory {
public:
    // Two or more friendly names, or a CA; a list that cannot be read counts
    // as empty, and so does a channel without a device path.
    bool holdsOwnCertificates(const NPAChannel& channel) override;
};
