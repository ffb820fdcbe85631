// What the configurator asks about the printer's own certificates: whether it
// should have the printer validate the server's certificate (802.1x). The
// certificate manager's client answers it; the configurator only knows this
// interface, which the front end hands it.
#pragma once

class NPAChannel;

class CertificateInventory {
public:
    virtual ~CertificateInventory() = default;
    // True when the printer holds certificates of its own, asked over a
    // duplicate of `channel` (the configurator's channel stays as it is).
    virtual bool holdsOwnCertificates(const NPAChannel& channel) = 0;
};
