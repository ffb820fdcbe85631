// Parse throughput of SimpleSAXParser and expat on the same documents, and
// simpleXPath evaluations per second on a typical certificate-manager answer.
// Both parsers report to handlers that do the same small work (count
// elements and text bytes), so the figures compare the tokenizers.
#include <benchmark/benchmark.h>
#include <expat.h>

#include <cstring>
#include <map>
#include <string>

#include "bench/BenchDocuments.h"
#include "bench/RatioReporter.h"
#include "xml/ObjStoreResponse.h"
#include "xml/SimpleSAXParser.h"
#include "xml/SimpleXPath.h"

namespace {

struct Tally {
    size_t elements = 0;
    size_t textBytes = 0;
    size_t attributes = 0;
};

class CountingHandler : public SimpleSAXHandler {
public:
    void startElement(const char*, const attributes& attrs) override
    {
        ++tally.elements;
        tally.attributes += attrs.size();
    }
    void characters(const char* text, int) override { tally.textBytes += std::strlen(text); }
    Tally tally;
};

void XMLCALL expatStart(void* data, const XML_Char*, const XML_Char** attrs)
{
    Tally* tally = static_cast<Tally*>(data);
    ++tally->elements;
    for (; attrs[0] != nullptr; attrs += 2) {
        ++tally->attributes;
    }
}

void XMLCALL expatText(void* data, const XML_Char*, int length) { static_cast<Tally*>(data)->textBytes += length; }

enum Document { kTypical, kSmallElements, kEntityDense };

// The documents are built once and shared by both parsers.
const std::string& document(Document kind, size_t bytes)
{
    static std::map<std::pair<int, size_t>, std::string> cache;
    std::string& text = cache[{kind, bytes}];
    if (text.empty()) {
        text = kind == kTypical         ? typicalAnswer()
               : kind == kSmallElements ? smallElementsDocument(bytes)
                                        : entityDenseDocument(bytes);
    }
    return text;
}

void ParseSimple(benchmark::State& state, Document kind, size_t bytes)
{
    const std::string& text = document(kind, bytes);
    for (auto _ : state) {
        CountingHandler handler;
        SimpleSAXParser parser(&handler);
        if (parser.parse(text) != 0) {
            state.SkipWithError("SimpleSAXParser refused the document");
            break;
        }
        benchmark::DoNotOptimize(handler.tally);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void ParseExpat(benchmark::State& state, Document kind, size_t bytes)
{
    const std::string& text = document(kind, bytes);
    for (auto _ : state) {
        Tally tally;
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &tally);
        XML_SetStartElementHandler(parser, expatStart);
        XML_SetCharacterDataHandler(parser, expatText);
        const XML_Status status = XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1);
        XML_ParserFree(parser);
        if (status != XML_STATUS_OK) {
            state.SkipWithError("expat refused the document");
            break;
        }
        benchmark::DoNotOptimize(tally);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void XPathStatusCode(benchmark::State& state)
{
    simpleXPath xpath(typicalAnswer());
    for (auto _ : state) {
        benchmark::DoNotOptimize(xpath.evaluate("/response/MapElem/child[@name='status_code']/IntegerElem"));
    }
    state.SetItemsProcessed(state.iterations());
}

void XPathLastListItem(benchmark::State& state)
{
    simpleXPath xpath(typicalAnswer());
    for (auto _ : state) {
        benchmark::DoNotOptimize(xpath.evaluate("/response/MapElem/child[@name='cert_list']/ListElem/StringElem[3]"));
    }
    state.SetItemsProcessed(state.iterations());
}

void CertDefaults(benchmark::State& state)
{
    ObjStoreResponse response;
    response.setResponse(typicalAnswer().c_str());
    std::string fields[7];
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            response.getCertDefaults(fields[0], fields[1], fields[2], fields[3], fields[4], fields[5], fields[6]));
    }
    state.SetItemsProcessed(state.iterations());
}

void registerParsers(const char* label, Document kind, size_t bytes)
{
    benchmark::RegisterBenchmark((std::string("ParseSimple/") + label).c_str(), ParseSimple, kind, bytes);
    benchmark::RegisterBenchmark((std::string("ParseExpat/") + label).c_str(), ParseExpat, kind, bytes);
}

}  // namespace

int main(int argc, char** argv)
{
    registerParsers("typical_answer", kTypical, 0);
    // 1x, 10x and 100x: equal MB/s across the sizes means linear cost.
    registerParsers("small_elements_10KB", kSmallElements, 10 << 10);
    registerParsers("small_elements_100KB", kSmallElements, 100 << 10);
    registerParsers("small_elements_1MB", kSmallElements, 1 << 20);
    registerParsers("entity_dense_10KB", kEntityDense, 10 << 10);
    registerParsers("entity_dense_100KB", kEntityDense, 100 << 10);
    registerParsers("entity_dense_1MB", kEntityDense, 1 << 20);
    benchmark::RegisterBenchmark("XPath/status_code", XPathStatusCode);
    benchmark::RegisterBenchmark("XPath/cert_list_item_3", XPathLastListItem);
    benchmark::RegisterBenchmark("ObjStoreResponse/getCertDefaults", CertDefaults);

    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
