#include "sim/printer/Responder.h"

#include "sim/printer/CertManager.h"
#include "sim/wire/NpaPacket.h"

namespace corvelsim {

namespace {
const Bytes kEnvelopeCommand = {0xE0, 0x63, 0x02};
const Bytes kCertMgrEnvelope = {0xE0, 0xC0, 0x03, 0x00, 0x01, 0x00, 0xE0};
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
    if (request.kind == RequestKind::CertMgr) return answerCertMgr(request);
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

Decision Responder::answerCertMgr(const Request& request)
{
    Decision decision;
    if (m_Faults.certSilent) {
        decision.faults.push_back("cert-silent");
        return decision;
    }
    CertAnswer answer;
    if (const CertStatusFault* fault = certStatusFor(m_Faults, request.call.method)) {
        answer = statusAnswer(fault->code, fault->message);
        decision.faults.push_back("cert-status");
    } else {
        answer = CertManager(m_State).answer(request.call);
        if (answer.xml.size() + kCertMgrEnvelope.size() + m_Faults.certE0Bytes > kMaxContent)
            answer = statusAnswer(kCertFailed, "the answer would not fit in one packet");
    }
    decision.certStatus = answer.statusCode;
    std::string xml = answer.xml;
    if (m_Faults.certE0Bytes > 0) {
        xml = insertE0(xml, m_Faults.certE0Bytes);
        decision.faults.push_back("cert-e0");
    }
    Bytes content;
    if (m_Faults.certNoEnvelope)
        decision.faults.push_back("cert-no-envelope");
    else
        content = kCertMgrEnvelope;
    content.insert(content.end(), xml.begin(), xml.end());
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
