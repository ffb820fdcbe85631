// Evaluates fuzzed paths over fuzzed documents. The input is split at its
// first line break: the path before it, the document after it.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "xml/PathCompiler.h"
#include "xml/SimpleXPath.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static FILE* devNull = std::freopen("/dev/null", "w", stdout);
    (void)devNull;
    const std::string input(reinterpret_cast<const char*>(data), size);
    const size_t split = input.find('\n');
    const std::string path = split == std::string::npos ? input : input.substr(0, split);
    const std::string document = split == std::string::npos ? std::string() : input.substr(split + 1);

    compilePath(path);
    simpleXPath xpath(document);
    const std::string first = xpath.evaluate(path);
    // Each evaluation starts afresh: the same path gives the same text.
    if (xpath.evaluate(path) != first) {
        std::abort();
    }
    // A result is the text of an element, so it can never be longer than the document.
    if (first.size() > document.size()) {
        std::abort();
    }
    return 0;
}
