#include "sim/Responder.h"

#include "sim/NpaPacket.h"

namespace corvelsim {

namespace {
const Bytes kEnvelopeCommand = {0xE0, 0x63, 0x02};
constexpr uint8_t kAccepted = 0x01;
constexpr uint8_t kNotAccepted = 0x00;
}  // namespace

Bytes refusalFor(const Request& request)
{
    if (request.envelope) return makePacket(kFlagsRefusal, kEnvelopeCommand);
    return makePacket(kFlagsRefusal, request.command);
}

Decision Responder::answer(const Request& request)
{
    Decision decision;
    if (request.kind == RequestKind::CertMgr) {
        return decision;  // the certificate manager does not answer yet
    }
    if (request.kind == RequestKind::Unknown) {
        decision.answer = refusalFor(request);
        return decision;
    }
    if (request.envelope && m_Faults.refuseEnvelope) {
        decision.answer = refusalFor(request);
        decision.faults.push_back("refuse-envelope");
        return decision;
    }

    Bytes inner = answerInner(request, decision);
    if (!request.envelope) {
        decision.answer = inner;
        return decision;
    }
    // The answer travels in an envelope of the same shape as the request's.
    Bytes content = kEnvelopeCommand;
    appendBE16(content, unsigned(inner.size()));
    content.insert(content.end(), inner.begin(), inner.end());
    decision.answer = makePacket(kFlagsNormal, content);
    return decision;
}

Bytes Responder::answerInner(const Request& request, Decision& decision)
{
    if (request.kind == RequestKind::Read) return answerRead(request);
    return answerSettings(request, decision);
}

Bytes Responder::answerRead(const Request& request)
{
    Bytes value = m_State.readField(request.group, request.field);
    if (value.size() > kMaxContent - 7) value.resize(kMaxContent - 7);

    Bytes content = {0xE0, 0xD8, 0x00, request.group, request.field};
    appendBE16(content, unsigned(value.size()));
    content.insert(content.end(), value.begin(), value.end());
    return makePacket(kFlagsNormal, content);
}

Bytes Responder::answerSettings(const Request& request, Decision& decision)
{
    bool accepted = request.itemsWellFormed && !m_Faults.rejectSettings;
    if (request.itemsWellFormed && m_Faults.rejectSettings) decision.faults.push_back("reject-settings");
    if (accepted) {
        m_State.applySettings(request.items);
    }
    decision.settingsAccepted = accepted;
    return makePacket(kFlagsNormal, {0xE0, 0xDA, 0x01, accepted ? kAccepted : kNotAccepted});
}

}  // namespace corvelsim
