#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/Base64.h"

namespace {

// Both directions write into a buffer one byte larger than the capacity
// given and check that the extra byte stays untouched.
std::string encoded(const std::string& bytes, uint32_t capacity = 64)
{
    std::vector<char> out(capacity + 1, 'Z');
    const bool ok =
        Base64::encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), out.data(), capacity);
    EXPECT_EQ(out[capacity], 'Z') << "wrote past the capacity";
    EXPECT_TRUE(ok || std::string(out.begin(), out.end()) == std::string(capacity + 1, 'Z')) << "refused but wrote";
    return ok ? std::string(out.data()) : "<refused>";
}

int decodedCount(const char* text, uint32_t capacity, std::string* bytes = nullptr)
{
    std::vector<unsigned char> out(capacity + 1, 0xAA);
    const int count = Base64::decode(text, out.data(), capacity);
    EXPECT_EQ(out[capacity], 0xAA) << "wrote past the capacity";
    if (bytes != nullptr && count > 0) bytes->assign(out.begin(), out.begin() + count);
    return count;
}

TEST(Base64, EncodeLengthsPaddingAndCapacity)
{
    std::string largest;  // 12285 bytes: 16380 characters, with the terminator 16381 of 16384
    for (int group = 0; group < 4095; ++group) largest += "eHh4";  // "xxx"
    // clang-format off
    const struct {
        std::string in;
        uint32_t capacity;
        std::string out;
    } cases[] = {
        {"f", 64, "Zg=="}, {"fo", 64, "Zm8="}, {"foobar", 64, "Zm9vYmFy"}, {std::string("\xfb\xff", 2), 64, "+/8="},
        // The terminator counts against the capacity.
        {"foo", 5, "Zm9v"}, {"foo", 4, "<refused>"}, {"", 1, ""}, {"", 0, "<refused>"},
        {std::string(12285, 'x'), 16384, largest}, {std::string(12286, 'x'), 16384, "<refused>"},
    };
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(encoded(c.in, c.capacity), c.out) << c.in.size() << " bytes into " << c.capacity;
}

TEST(Base64, DecodeGroupsEndAtTheFirstPaddedOne)
{
    // clang-format off
    const struct {
        const char* text;
        std::string bytes;
    } cases[] = {
        {"Zm8=", "fo"},
        {"Zm9vYg", "foob"},             // missing padding: the end of the text pads
        {"Zm 9v\r\nYm-Fy!", "foobar"},  // anything outside the alphabet is skipped
        {"Zg==Zm9v", "f"},              // text after the first padded group is ignored
        {"A===", ""},                   // one character and three pads yield nothing
        {"Zm9vZ=9v", "foo"},            // padding inside a group: the group gives nothing
        {"AP/+", std::string("\x00\xff\xfe", 3)},
    };
    // clang-format on
    for (const auto& c : cases) {
        std::string bytes;
        EXPECT_EQ(decodedCount(c.text, 64, &bytes), static_cast<int>(c.bytes.size())) << c.text;
        EXPECT_EQ(bytes, c.bytes) << c.text;
    }
}

TEST(Base64, DecodeRefusesWhatDoesNotFit)
{
    EXPECT_EQ(decodedCount("Zm9vYg==", 4), 4);
    EXPECT_EQ(decodedCount("Zm9vYg==", 3), -1);
}

}  // namespace
