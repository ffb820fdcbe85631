#include "ctl/PrinterOutcome.h"

#include "ctl/Json.h"

#include <algorithm>

namespace corvelctl {

namespace {

std::string failureElement(const PrinterOutcome& outcome)
{
    JsonWriter writer;
    writer.beginObject();
    writer.key("printer");
    writer.string(outcome.printer);
    writer.key("serial");
    if (outcome.serial) {
        writer.string(*outcome.serial);
    } else {
        writer.null();
    }
    writer.key("error");
    writer.string(outcome.failure->message());
    writer.key("exit");
    writer.integer(exitCode(outcome.failure->status()));
    writer.endObject();
    return writer.text();
}

std::string heading(const PrinterOutcome& outcome)
{
    const std::string serial = outcome.serial ? " (serial " + *outcome.serial + ")" : "";
    return withoutControlCharacters(outcome.printer + serial) + ":\n";
}

}  // namespace

std::string shownReport(Report report, const std::optional<std::string>& serial, bool json)
{
    if (!json) return report.renderHuman();
    // Every printer command's report starts with "printer".
    return report.insertOptionalText(1, "serial", serial).renderJson();
}

MergedOutput mergeOutcomes(const std::vector<PrinterOutcome>& outcomes, bool json)
{
    MergedOutput merged;
    bool first = true;
    for (const PrinterOutcome& outcome : outcomes) {
        if (outcome.failure) {
            merged.err += "corvelctl: " + outcome.printer + ": " + outcome.failure->message() + "\n";
            merged.status = std::max(merged.status, exitCode(outcome.failure->status()));
        }
        if (json) {
            merged.out += (first ? "[" : ", ") + (outcome.failure ? failureElement(outcome) : outcome.shown);
        } else if (!outcome.failure) {
            merged.out += (first ? "" : "\n") + heading(outcome) + outcome.shown;
        } else {
            continue;
        }
        first = false;
    }
    if (json) merged.out += (first ? "[" : "") + std::string("]\n");
    return merged;
}

}  // namespace corvelctl
