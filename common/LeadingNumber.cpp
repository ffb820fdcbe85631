#include "common/LeadingNumber.h"

#include <climits>

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; }

}  // namespace

LeadingNumber readLeadingNumber(const char* text, size_t maxChars)
{
    size_t i = 0;
    while (i < maxChars && isBlank(text[i])) {
        ++i;
    }
    bool negative = false;
    if (i < maxChars && (text[i] == '+' || text[i] == '-')) {
        negative = text[i] == '-';
        ++i;
    }
    long long magnitude = 0;  // stops growing once past the int range; clamped below
    uint32_t wrapped = 0;     // unsigned arithmetic wraps instead of overflowing
    for (; i < maxChars && text[i] >= '0' && text[i] <= '9'; ++i) {
        const int digit = text[i] - '0';
        if (magnitude <= INT_MAX) {
            magnitude = magnitude * 10 + digit;
        }
        wrapped = wrapped * 10 + static_cast<uint32_t>(digit);
    }
    const long long value = negative ? -magnitude : magnitude;
    LeadingNumber result;
    result.value = value > INT_MAX ? INT_MAX : value < INT_MIN ? INT_MIN : static_cast<int>(value);
    result.lowByte = static_cast<uint8_t>((negative ? 0u - wrapped : wrapped) & 0xFF);
    return result;
}
