// Frame cutting and request decoding, from tables of bytes.
#include <gtest/gtest.h>

#include "sim/FrameReader.h"
#include "sim/Request.h"

namespace corvelsim {
namespace {

Bytes hex(const std::string& text)
{
    std::string digits;
    for (char c : text)
        if (c != ' ') digits += c;
    Bytes bytes;
    EXPECT_TRUE(fromHex(digits, bytes)) << text;
    return bytes;
}

TEST(FrameReader, CutsPacketsOutOfAnyChunking)
{
    const Bytes stream = hex("00 FF A5 00 06 50 E0 D8 00 28 08 13 A5 00 05 50 E0 DA 01 01");
    for (size_t chunk = 1; chunk <= stream.size(); ++chunk) {
        FrameReader reader;
        std::vector<Bytes> packets;
        for (size_t at = 0; at < stream.size(); at += chunk) {
            reader.feed(stream.data() + at, std::min(chunk, stream.size() - at));
            while (auto packet = reader.nextPacket()) packets.push_back(*packet);
        }
        ASSERT_EQ(packets.size(), 2u) << "chunk " << chunk;
        EXPECT_EQ(toHex(packets[0]), "A5000650E0D8002808");
        EXPECT_EQ(toHex(packets[1]), "A5000550E0DA0101");
        EXPECT_EQ(reader.noiseSkipped(), 3u);
        EXPECT_FALSE(reader.hasPartial());
    }
}

TEST(FrameReader, KeepsAnIncompletePacketUntilDropped)
{
    FrameReader reader;
    const Bytes start = hex("A5 00 10 50 E0");
    reader.feed(start.data(), start.size());
    EXPECT_FALSE(reader.nextPacket());
    EXPECT_TRUE(reader.hasPartial());
    EXPECT_EQ(toHex(reader.dropPartial()), "A5001050E0");
    EXPECT_FALSE(reader.hasPartial());
}

struct DecodeCase {
    const char* packet;
    RequestKind kind;
    bool envelope;
    const char* detail;  // "GGFF" for reads, item count for settings, problem otherwise
};

TEST(DecodePacket, TellsRequestsApart)
{
    const DecodeCase cases[] = {
        {"A5 00 06 50 E0 D8 00 2A 1D", RequestKind::Read, false, "2A1D"},
        {"A5 00 0F 50 E0 63 02 00 09 A5 00 06 50 E0 D8 00 28 08", RequestKind::Read, true, "2808"},
        {"A5 00 0A 50 E0 DA 01 06 14 00 00 01 01", RequestKind::Settings, false, "1"},
        {"A5 00 14 50 E0 DA 01 28 08 00 00 03 41 42 00 28 22 00 00 04 00 00 00 02", RequestKind::Settings, false, "2"},
        {"A5 00 0A 50 E0 DA 01 06 14 00 00 05 01", RequestKind::Settings, false, "malformed items"},
        {"A5 00 07 50 E0 D8 00 28 08 00", RequestKind::Unknown, false, "read request of 10 bytes"},
        {"A5 00 04 50 12 34 56", RequestKind::Unknown, false, "unknown command"},
        {"A5 00 02 50 E0", RequestKind::Unknown, false, "packet too short"},
        {"A5 00 0F 50 E0 63 02 00 08 A5 00 06 50 E0 D8 00 28 08", RequestKind::Unknown, true,
         "envelope does not hold one complete packet"},
        {"A5 00 0F 50 E0 63 02 00 09 A5 00 09 50 E0 D8 00 28 08", RequestKind::Unknown, true,
         "envelope does not hold one complete packet"},
        {"A5 00 06 50 E0 63 02 00 00", RequestKind::Unknown, true, "envelope does not hold one complete packet"},
    };
    for (const DecodeCase& c : cases) {
        SCOPED_TRACE(c.packet);
        Request request = decodePacket(hex(c.packet));
        EXPECT_EQ(request.kind, c.kind);
        EXPECT_EQ(request.envelope, c.envelope);
        EXPECT_EQ(toHex(request.raw), toHex(hex(c.packet)));
        if (c.kind == RequestKind::Read) EXPECT_EQ(hexByte(request.group) + hexByte(request.field), c.detail);
        else if (c.kind == RequestKind::Settings && request.itemsWellFormed)
            EXPECT_EQ(std::to_string(request.items.size()), c.detail);
        else EXPECT_EQ(request.problem, c.detail);
    }
}

TEST(DecodePacket, SettingsItemsKeepTheirValues)
{
    Request request = decodePacket(hex("A5 00 14 50 E0 DA 01 28 08 00 00 03 41 42 00 28 22 00 00 04 00 00 00 02"));
    ASSERT_EQ(request.items.size(), 2u);
    EXPECT_EQ(request.items[0].group, 0x28);
    EXPECT_EQ(request.items[0].field, 0x08);
    EXPECT_EQ(toHex(request.items[0].value), "414200");
    EXPECT_EQ(toHex(request.items[1].value), "00000002");
}

TEST(DecodeCertMgr, FindsTheMethodName)
{
    const std::string xml = "<?xml version=\"1.0\"?><method name=\"callMethod\" requestID=\"100\"><arg "
                            "name=\"objName\">applications.certMgr</arg><arg name=\"method\">readCertDefaults</arg>"
                            "</method>";
    Bytes call = hex("A5 00 00 50 E0 C0 03 00 01");
    call.insert(call.end(), xml.begin(), xml.end());
    call[1] = uint8_t((call.size() - 3) >> 8);
    call[2] = uint8_t(call.size() - 3);
    const Bytes opening = hex("A5 00 10 80 3C C3 3C C3 21 DE 3C C3 22 DD 01 FE 24 DB 5D");
    ASSERT_TRUE(isCertMgrOpening(opening));
    ASSERT_TRUE(isCertMgrCall(call));
    Request request = decodeCertMgr(opening, call);
    EXPECT_EQ(request.kind, RequestKind::CertMgr);
    EXPECT_EQ(request.method, "readCertDefaults");
    EXPECT_EQ(request.raw.size(), opening.size() + call.size());
    EXPECT_EQ(decodeCertMgr(opening, hex("A5 00 06 50 E0 C0 03 00 01")).method, "");
}

}  // namespace
}  // namespace corvelsim
