// One attached USB printer as corvelctl lists it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvelctl {

struct PrinterRecord {
    std::vector<std::string> nodes;  // "/dev/usb/lpN", lowest number first; empty without usblp
    int bus = 0;                     // 0 when unknown (a node without its USB device)
    int device = 0;
    std::string vendorId;   // 4 lowercase hex digits, as sysfs gives them
    std::string productId;  // 4 lowercase hex digits
    std::optional<std::string> manufacturer;
    std::optional<std::string> product;
    std::optional<std::string> serial;

    bool hasBusDevice() const { return bus > 0 && device > 0; }
    // "BBB:DDD" (three digits each), or "" when unknown.
    std::string busDevice() const;
};

}  // namespace corvelctl
