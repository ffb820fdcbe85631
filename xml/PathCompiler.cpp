#include "xml/PathCompiler.h"

#include "common/LeadingNumber.h"

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

}  // namespace

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

    const int position = readLeadingNumber(trimSpaces(inner)).value;
    if (position >= 1 && position <= 9) {
        node.predicateName = kIndexPredicate;
        node.index = position;
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
