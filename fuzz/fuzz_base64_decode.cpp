// Decodes fuzzed text into a small buffer and checks the count against the
// capacity; a successful decode re-encodes to the same alphabet characters.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "common/Base64.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) {
        return 0;
    }
    // The first byte picks the capacity, so the refusal path is reached too.
    const uint32_t capacity = data[0];
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    std::vector<unsigned char> out(capacity + 1, 0xA5);
    const int count = Base64::decode(text.c_str(), out.data(), capacity);
    if (count < -1 || count > static_cast<int>(capacity) || out[capacity] != 0xA5) {
        std::abort();
    }
    if (count > 0) {
        std::vector<char> again(4 * ((count + 2) / 3) + 1);
        if (!Base64::encode(out.data(), count, again.data(), again.size())) {
            std::abort();
        }
        std::vector<unsigned char> back(count);
        if (Base64::decode(again.data(), back.data(), count) != count ||
            std::memcmp(back.data(), out.data(), count) != 0) {
            std::abort();
        }
    }
    return 0;
}
