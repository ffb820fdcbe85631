// Base64 with the standard alphabet and "=" padding, as the certificate
// manager carries files in BinaryElem values.
#pragma once

#include <string>

namespace corvelsim {

std::string base64Encode(const std::string& bytes);

// Decodes, skipping white space; false on any other character outside the
// alphabet or a length that is not a multiple of four.
bool base64Decode(const std::string& text, std::string& bytes);

}  // namespace corvelsim
