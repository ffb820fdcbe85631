#include "bench/BenchDocuments.h"

namespace {

std::string child(const std::string& name, const std::string& element, const std::string& value)
{
    return "<child name=\"" + name + "\"><" + element + ">" + value + "</" + element + "></child>";
}

}  // namespace

std::string typicalAnswer()
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><response><MapElem>" + child("status_code", "IntegerElem", "1") +
           child("status_mesg", "StringElem", "Success") + child("x509_O", "StringElem", "Acme &amp; Sons Printing") +
           child("x509_OU", "StringElem", "Engineering") + child("x509_C", "StringElem", "DE") +
           child("x509_ST", "StringElem", "Berlin") + child("x509_L", "StringElem", "Berlin-Mitte") +
           child("x509_CN", "StringElem", "printer-0042.example.com") +
           child("x509_AN", "StringElem", "printer-0042.local") +
           "<child name=\"cert_list\"><ListElem><StringElem>wifi-2024</StringElem>"
           "<StringElem>wifi-2025</StringElem><StringElem>lab</StringElem></ListElem></child>"
           "</MapElem></response>";
}

std::string smallElementsDocument(size_t bytes)
{
    std::string document = "<response><MapElem><child name=\"cert_list\"><ListElem>";
    for (size_t i = 0; document.size() < bytes; ++i) {
        document += "<StringElem>c" + std::to_string(i) + "</StringElem><IntegerElem>" + std::to_string(i % 97) +
                    "</IntegerElem>";
    }
    return document + "</ListElem></child></MapElem></response>";
}

std::string entityDenseDocument(size_t bytes)
{
    std::string document = "<response>";
    while (document.size() < bytes) {
        document += "<e a=\"x&amp;y\" b=\"&lt;z&gt;\" c=\"&quot;q&quot;\">t &amp; &lt;u&gt; &apos;v&apos; "
                    "&quot;w&quot;</e>";
    }
    return document + "</response>";
}
