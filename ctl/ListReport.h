// What the list command shows.
#pragma once

#include "ctl/PrinterRecord.h"
#include "ctl/Report.h"

#include <string>
#include <vector>

namespace corvelctl {

// {"printers": [{"node", "bus_device", "vendor_id", "product_id",
// "manufacturer", "product", "serial"}]}; "node" is the lowest-numbered node
// (the human form shows all of them).
Report listReport(const std::vector<PrinterRecord>& printers);

// One block of aligned lines per printer, an empty line between blocks;
// "no printer is attached" when there is none.
std::string listHumanText(const std::vector<PrinterRecord>& printers);

}  // namespace corvelctl
