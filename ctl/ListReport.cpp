#include "ctl/ListReport.h"

namespace corvelctl {

namespace {

Report printerReport(const PrinterRecord& printer)
{
    Report report;
    if (printer.nodes.empty()) {
        report.addNull("node");
    } else {
        report.addText("node", printer.nodes.front());
        std::string allNodes;
        for (const std::string& node : printer.nodes) allNodes += (allNodes.empty() ? "" : ", ") + node;
        report.humanText(allNodes);
    }
    if (printer.hasBusDevice()) {
        report.addText("bus_device", printer.busDevice());
    } else {
        report.addNull("bus_device");
    }
    report.addText("vendor_id", printer.vendorId)
        .addText("product_id", printer.productId)
        .addOptionalText("manufacturer", printer.manufacturer)
        .addOptionalText("product", printer.product)
        .addOptionalText("serial", printer.serial);
    return report;
}

}  // namespace

Report listReport(const std::vector<PrinterRecord>& printers)
{
    std::vector<Report> items;
    for (const PrinterRecord& printer : printers) items.push_back(printerReport(printer));
    Report report;
    report.addList("printers", std::move(items));
    return report;
}

std::string listHumanText(const std::vector<PrinterRecord>& printers)
{
    if (printers.empty()) return "no printer is attached\n";
    std::string text;
    for (const PrinterRecord& printer : printers) {
        if (!text.empty()) text += '\n';
        text += printerReport(printer).renderHuman();
    }
    return text;
}

}  // namespace corvelctl
