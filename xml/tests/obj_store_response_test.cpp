#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "xml/ObjStoreResponse.h"

namespace {

std::string child(const std::string& name, const std::string& element, const std::string& value)
{
    return "<child name=\"" + name + "\"><" + element + ">" + value + "</" + element + "></child>";
}

std::string answer(const std::string& fields)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><response><MapElem>" + fields + "</MapElem></response>";
}

std::string listOf(int count, int emptyItem = 0)
{
    std::string items;
    for (int i = 1; i <= count; ++i) {
        items += "<StringElem>" + (i == emptyItem ? std::string() : "name" + std::to_string(i)) + "</StringElem>";
    }
    return "<child name=\"cert_list\"><ListElem>" + items + "</ListElem></child>";
}

ObjStoreResponse responseOf(const std::string& xml)
{
    ObjStoreResponse response;
    response.setResponse(xml.c_str());
    return response;
}

TEST(ObjStoreResponse, StatusCodeAndMessage)
{
    struct Case {
        std::string xml;
        int code;
        const char* message;
    };
    const Case cases[] = {
        {answer(child("status_code", "IntegerElem", "1")), 1, ""},
        {answer(child("status_mesg", "StringElem", "Bad &quot;file&quot;") + child("status_code", "IntegerElem", "-7")),
         -7, "Bad \"file\""},
        {answer(child("status_code", "IntegerElem", "1 ")), 1, ""},
        {answer(child("status_code", "IntegerElem", "abc")), 0, ""},
        {answer(child("status_code", "IntegerElem", "99999999999999999999")), INT_MAX, ""},
        {answer(child("status_code", "IntegerElem", "-99999999999999999999")), INT_MIN, ""},
        {answer(child("status_code", "StringElem", "1")), 0, ""},
        {answer(child("status_code", "IntegerElem", "3") + child("status_code", "IntegerElem", "4")), 3, ""},
        {"", 0, ""},
        {"not xml at all", 0, ""},
    };
    for (const Case& c : cases) {
        const ObjStoreResponse response = responseOf(c.xml);
        EXPECT_EQ(response.getStatusCode(), c.code) << c.xml;
        EXPECT_EQ(response.getStatusMessage(), c.message) << c.xml;
    }
    EXPECT_EQ(ObjStoreResponse().getStatusCode(), 0);
}

TEST(ObjStoreResponse, MultiFieldAccessorsNeedStatusTextExactlyOne)
{
    const std::string fields = child("x509_O", "StringElem", "Acme &amp; Co") + child("x509_OU", "StringElem", "Lab") +
                               child("x509_C", "StringElem", "DE") + child("x509_ST", "StringElem", "Berlin") +
                               child("x509_L", "StringElem", "Mitte") + child("x509_CN", "StringElem", "printer") +
                               child("x509_AN", "StringElem", "alt") +
                               child("ca_file_name", "StringElem", "ca.pem") +
                               child("ca_common_name", "StringElem", "Root CA") + listOf(2);
    const struct {
        std::string status;
        bool gateOpen;
    } cases[] = {{"1", true}, {"01", false}, {"1 ", false}, {"2", false}, {"", false}};
    for (const auto& c : cases) {
        const ObjStoreResponse response = responseOf(answer(child("status_code", "IntegerElem", c.status) + fields));
        std::string subject[7] = {"o", "ou", "c", "st", "l", "cn", "an"};
        const int got =
            response.getCertDefaults(subject[0], subject[1], subject[2], subject[3], subject[4], subject[5], subject[6]);
        std::string file = "f", path = "p", name = "n";
        response.getCAFileInfo(file, path, name);
        std::vector<std::string> certs = {"old"};
        std::vector<std::string> cas = {"old"};
        response.getCertList(certs);
        response.getCAList(cas);
        unsigned char csr[8] = {};
        if (c.gateOpen) {
            EXPECT_EQ(got, 1);
            const std::string expected[7] = {"Acme & Co", "Lab", "DE", "Berlin", "Mitte", "printer", "alt"};
            for (int i = 0; i < 7; ++i) {
                EXPECT_EQ(subject[i], expected[i]);
            }
            EXPECT_EQ(file, "ca.pem");
            EXPECT_EQ(path, ""); // missing field
            EXPECT_EQ(name, "Root CA");
            EXPECT_EQ(certs, (std::vector<std::string>{"name1", "name2"}));
            EXPECT_EQ(cas, certs);
        } else {
            EXPECT_EQ(got, 0) << "status [" << c.status << "]";
            EXPECT_EQ(subject[0], "o");
            EXPECT_EQ(subject[6], "an");
            EXPECT_EQ(file + path + name, "fpn");
            EXPECT_EQ(certs, std::vector<std::string>{"old"});
            EXPECT_EQ(cas, std::vector<std::string>{"old"});
            EXPECT_EQ(response.getCSRFile(csr, sizeof csr), 0);
        }
    }
}

TEST(ObjStoreResponse, ListWalkStopsAtFirstEmptyItemAndAtNine)
{
    const struct {
        int items;
        int emptyItem;
        size_t expected;
    } cases[] = {{0, 0, 0}, {3, 2, 1}, {3, 1, 0}, {9, 0, 9}, {12, 0, 9}};
    for (const auto& c : cases) {
        const ObjStoreResponse response =
            responseOf(answer(child("status_code", "IntegerElem", "1") + listOf(c.items, c.emptyItem)));
        std::vector<std::string> names = {"stale"};
        response.getCertList(names);
        ASSERT_EQ(names.size(), c.expected) << c.items << " items";
        for (size_t i = 0; i < names.size(); ++i) {
            EXPECT_EQ(names[i], "name" + std::to_string(i + 1));
        }
    }
}

TEST(ObjStoreResponse, CSRFileDecodesIntoCapacity)
{
    const ObjStoreResponse response = responseOf(answer(
        child("status_code", "IntegerElem", "1") + child("cert_dot_csr_file", "BinaryElem", "LS0tLS1CRUdJTg==")));
    unsigned char buffer[16];
    std::memset(buffer, 0, sizeof buffer);
    EXPECT_EQ(response.getCSRFile(buffer, sizeof buffer), 10);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 10), "-----BEGIN");
    EXPECT_EQ(response.getCSRFile(buffer, 10), 10);
    EXPECT_EQ(response.getCSRFile(buffer, 9), 0);

    const ObjStoreResponse empty = responseOf(answer(child("status_code", "IntegerElem", "1")));
    EXPECT_EQ(empty.getCSRFile(buffer, sizeof buffer), 0);
}

TEST(ObjStoreResponse, FriendlyName)
{
    EXPECT_EQ(responseOf(answer(child("cert_friendly_name", "StringElem", "  wifi cert "))).getFriendlyName(),
              "wifi cert ");
}

} // namespace
