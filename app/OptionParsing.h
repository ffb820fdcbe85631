// Filling the configuration record from the command line, a settings file or
// a raw packet file.
#pragma once

#include <string>
#include <vector>

#include "npa/ConfigDetails.h"

// If `argument` contains `key`, replaces `value` by the text extracted from
// the argument (see the .cpp for the quote rule). Always returns 0.
int getOptionValue(const std::string& argument, const char* key, std::string& value);

// Option form: every argument from index 1 that contains '-' is tried against
// every key; an argument without '-' is the USB path. Returns 0.
int parseArguments(ConfigDetails& config, int argc, const std::vector<std::string>& args);

// Settings-file form: one option per line, '#' comment lines. Returns 0 when
// the file was read, -1 when it could not be opened or read or is larger than
// kInputFileLimit (the record keeps its values but for usbPath; the reason is
// left in errno).
int readConfigFile(ConfigDetails& config, const std::string& fileName, const std::string& usbPath);

// USB-path-only form: the last argument from index 1 without '-' becomes `usbPath`.
int findUsbPath(std::string& usbPath, int argc, const std::vector<std::string>& args);

// Raw-packet form: keeps the hexadecimal digits of the file in `npaData`.
// Returns 0, -1 when the file cannot be opened, -2 when it is larger than
// kInputFileLimit (errno EFBIG); the record is unchanged on both.
int readNpaFile(ConfigDetails& config, const std::string& path);
