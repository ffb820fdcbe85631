// The certificate manager's wire format: the request texts of the ten methods,
// the two-packet request that carries a text, and the envelope of an answer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace certreq {

// Request texts with their placeholders ("%s" text, "%d" decimal), one line of
// XML each, exactly as the printer expects them.
extern const char* const kDeleteIndividualCA;
extern const char* const kDeleteIndividualCert;
extern const char* const kReadCertDefaults;  // fixed; its declaration has no encoding
extern const char* const kUploadSignedCertFile;
extern const char* const kQueryCAInfo;
extern const char* const kQueryCertList;  // fixed
extern const char* const kQueryCAList;    // fixed
extern const char* const kUploadNewCAFile;
extern const char* const kExportPubKey;
extern const char* const kGenerateNewCert;

// Sizes of the fixed buffers the requests are formatted into.
constexpr size_t kSmallRequest = 2048;
constexpr size_t kRequest = 3072;
constexpr size_t kFileRequest = 16384;

// Formats `format` into `buffer` (zero-filled first). A request that would
// not fit with its terminator is not sent: false, and one line on standard
// error naming the method and the limit.
bool formatRequest(char* buffer, size_t capacity, const char* method, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

// The bytes handed to the exchange: a fixed 0x80-flagged first packet, then
// the request text in a packet with the command bytes E0 C0 03 00 01.
std::vector<uint8_t> buildRequestPacket(const char* text);

// The XML text of an answer: every byte after the 7-byte envelope
// E0 C0 03 00 01 00 E0, each 0xE0 left out, zero-terminated in `out` (zeroed
// first). Returns the text's length; 0 with `out` untouched when the envelope
// is missing or the answer does not fit `capacity`.
size_t unwrapAnswer(const uint8_t* answer, size_t length, char* out, size_t capacity);

// Whether the answer content so far holds a whole XML document: its root
// element has closed (only blanks or zero bytes may follow). The certificate
// manager's answer is whole then, even before its last packet.
bool answerDocumentClosed(const std::vector<uint8_t>& content);

}  // namespace certreq
