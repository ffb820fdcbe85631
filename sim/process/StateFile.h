// The state file's text: the printer's state kept between runs as readable
// "key=value" lines under a first line that marks the file as corvelsim's.
//
//   # corvelsim state v2
//   joined=0
//   connection_polls=0
//   ready_polls=0
//   resets=0
//   default_x509_O="Corvel Simulated Printers"   the subject readCertDefaults answers
//   28/08="HomeNet\0"        a setting: group/field = value
//   28/22=u32:2              4-byte numbers, 1-byte flags as u8:N
//   2A/24=hex:0102           anything else as hex
//   pending.1.friendly_name="CorvelRadioHelper"   a key waiting for its certificate
//   cert.1.pem="-----BEGIN CERTIFICATE-----\x0A..." an installed signed certificate
//   ca.1.name="Acme Root CA_Jan__5_2010_To_Dec_31_2030"
//
// Text values are quoted with C escapes (\0, \\, \", \xHH).
#pragma once

#include <string>
#include <vector>

#include "sim/printer/PrinterState.h"

namespace corvelsim {

// The file's text for a state.
std::string formatState(const PrinterState& state);

// The first line of every state file this version writes.
constexpr const char* kStateFileHeader = "# corvelsim state v2";
// The first line of the files of the first version, which had no marker.
constexpr const char* kStateFileHeaderV1 = "# corvelsim printer state: key=value lines, '#' starts a comment.";

// The format version its first line declares; 0 when the text is not a
// corvelsim state file.
int stateFileVersion(const std::string& text);

// Reads the text into `state` (which keeps what the text does not mention).
// Lines that cannot be read are skipped and described in `problems`.
void parseState(const std::string& text, PrinterState& state, std::vector<std::string>& problems);

// Spells one value for the file, and reads it back.
std::string formatValue(const Bytes& value);
bool parseValue(const std::string& text, Bytes& value);

}  // namespace corvelsim
