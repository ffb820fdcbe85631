#include "xml/PathCompiler.h"

const char* const kIndexPredicate = "<INDEX>";
const char* const kUndefinedPredicate = "<UNDEFINED>";

namespace {

// Removes leading and trailing spaces (0x20 only).
std::string trimSpaces(const std::string& text)
{
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) {
        return std::string();
    }
    const size_t last = text.find_last_not_of(' ');
    return text.substr(first, last - first + 1);
}

bool isSpaceForAtoi(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// The leading decimal integer as atoi reads it, saturated so that a long run
// of digits cannot overflow (only 1 to 9 matter to the caller).
long leadingInteger(const std::string& text)
{
    size_t pos = 0;
    while (pos < text.size() && isSpaceForAtoi(text[pos])) {
        ++pos;
    }
    bool negative = false;
    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) {
        negative = text[pos] == '-';
        ++pos;
    }
    long value = 0;
    while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') {
        if (value < 1000000) {
            value = value * 10 + (text[pos] - '0');
        }
        ++pos;
    }
    return negative ? -value : value;
}

} // namespace

PathNode compileStep(const std::string& step)
{
    PathNode node;
    const size_t open = step.find('[');
    node.name = open == std::string::npos ? step : trimSpaces(step.substr(0, open));
    if (open == std::string::npos) {
        return node;
    }
    const size_t close = step.find(']', open + 1);
    if (close == std::string::npos) {
        return node;
    }
    const std::string inner = step.substr(open + 1, close - open - 1);

    const long position = leadingInteger(trimSpaces(inner));
    if (position >= 1 && position <= 9) {
        node.predicateName = kIndexPredicate;
        node.index = static_cast<int>(position);
        return node;
    }
    const size_t at = inner.find('@');
    if (at == std::string::npos) {
        // [0], [10], [last()]: a predicate we cannot honour matches nothing.
        node.predicateName = kUndefinedPredicate;
        return node;
    }
    const size_t equals = inner.find('=', at + 1);
    if (equals == std::string::npos) {
        return node;
    }
    const size_t quote = inner.find('\'', equals + 1);
    if (quote == std::string::npos) {
        return node;
    }
    const size_t endQuote = inner.find('\'', quote + 1);
    if (endQuote == std::string::npos) {
        return node;
    }
    node.predicateName = trimSpaces(inner.substr(at + 1, equals - at - 1));
    node.predicateValue = inner.substr(quote + 1, endQuote - quote - 1);
    return node;
}

std::vector<PathNode> compilePath(const std::string& path)
{
    std::vector<PathNode> steps;
    size_t slash = path.find('/');
    while (slash != std::string::npos) {
        const size_t next = path.find('/', slash + 1);
        const size_t end = next == std::string::npos ? path.size() : next;
        const std::string step = trimSpaces(path.substr(slash + 1, end - slash - 1));
        if (!step.empty()) {
            steps.push_back(compileStep(step));
        }
        slash = next;
    }
    return steps;
}
