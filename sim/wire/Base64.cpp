#include "sim/wire/Base64.h"

#include <openssl/evp.h>

#include <cctype>

namespace corvelsim {

std::string base64Encode(const std::string& bytes)
{
    std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    int size = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                               reinterpret_cast<const unsigned char*>(bytes.data()), int(bytes.size()));
    text.resize(size_t(size));
    return text;
}

bool base64Decode(const std::string& text, std::string& bytes)
{
    std::string compact;
    for (char c : text) {
        if (!std::isspace(static_cast<unsigned char>(c))) compact += c;
    }
    if (compact.size() % 4 != 0) return false;
    size_t padding = 0;
    for (size_t i = 0; i < compact.size(); ++i) {
        char c = compact[i];
        bool inAlphabet = std::isalnum(static_cast<unsigned char>(c)) || c == '+' || c == '/';
        if (c == '=' && i + 2 >= compact.size())
            ++padding;
        else if (!inAlphabet || padding > 0)
            return false;
    }
    std::string out(compact.size() / 4 * 3, '\0');
    int size = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(out.data()),
                               reinterpret_cast<const unsigned char*>(compact.data()), int(compact.size()));
    if (size < 0) return false;
    out.resize(size_t(size) - padding);
    bytes = std::move(out);
    return true;
}

}  // namespace corvelsim
