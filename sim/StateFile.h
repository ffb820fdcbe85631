// The state file: the printer's settings kept between runs as readable
// "key=value" lines.
//
//   # lines starting with '#' are comments
//   joined=0
//   connection_polls=0
//   ready_polls=0
//   resets=0
//   28/08="HomeNet\0"        a setting: group/field = value
//   28/22=u32:2              4-byte numbers, 1-byte flags as u8:N
//   2A/24=hex:0102           anything else as hex
//
// Text values are quoted with C escapes (\0, \\, \", \xHH).
#pragma once

#include <string>
#include <vector>

#include "sim/PrinterState.h"

namespace corvelsim {

// The file's text for a state.
std::string formatState(const PrinterState& state);

// Reads the text into `state` (which keeps what the text does not mention).
// Lines that cannot be read are skipped and described in `problems`.
void parseState(const std::string& text, PrinterState& state, std::vector<std::string>& problems);

// Loads from a file; a missing file leaves the state as it is and is no error.
bool loadStateFile(const std::string& path, PrinterState& state, std::vector<std::string>& problems);

// Writes the file (through a temporary file and a rename).
bool saveStateFile(const std::string& path, const PrinterState& state);

// Spells one value for the file, and reads it back.
std::string formatValue(const Bytes& value);
bool parseValue(const std::string& text, Bytes& value);

}  // namespace corvelsim
