// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "gateway/GatewayFrames.h"
#include "gateway/UsualFrames.h"

#include <QJsonDocument>

using namespace bram;
using namespace Qt::StringLiterals;
using bram::fuzz::require;

namespace
{
void checkRequest(const ApprovalItem &item)
{
    require(!item.agentId || fuzz::isTrimmed(*item.agentId), "an agent id is never blank");
    QJsonObject request {{u"command"_s, item.command}};
    if (item.agentId) {
        request.insert(u"agentId"_s, *item.agentId);
    }
    const QJsonObject frame {{u"type"_s, u"event"_s},
                             {u"event"_s, QString(approvalRequestedEvent)},
                             {u"payload"_s,
                              QJsonObject {{u"id"_s, item.approvalId},
                                           {u"request"_s, request},
                                           {u"createdAtMs"_s, item.createdAtMs},
                                           {u"expiresAtMs"_s, item.expiresAtMs}}}};
    const auto again = parseFrame(QJsonDocument(frame).toJson(QJsonDocument::Compact));
    const auto *event = again ? std::get_if<GatewayEvent>(&*again) : nullptr;
    require(event != nullptr, "a request written back is an event");
    // JSON in UTF-8 cannot carry half a surrogate pair.
    if (item.command.isValidUtf16() && item.approvalId.isValidUtf16()
        && item.agentId.value_or(QString()).isValidUtf16()) {
        require(*event == GatewayEvent(ApprovalRequested {item}),
                "a request survives being written back");
    }
}

void checkOurRequest(const QString &id)
{
    const QByteArray encoded
        = encodeResolveRequest(QStringLiteral("1"), id, ApprovalDecision::Deny).toUtf8();
    require(!encoded.contains('\n'), "what we send is one line");
    const auto params = QJsonDocument::fromJson(encoded).object().value("params"_L1).toObject();
    require(params.value("id"_L1) == id, "the id of a decision is the request's");
    const auto frame = parseFrame(encoded);
    require(frame && std::holds_alternative<IgnoredFrame>(*frame), "what we send is no answer");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = fuzz::toBytes(data, size);
    const auto frame = parseFrame(bytes);
    static UsualFrameReader reader;
    const auto usual = reader.read(bytes);
    const bool isTinyNumberRefused = !frame && frame.error().message.endsWith(u"illegal number"_s);
    if (usual && !isTinyNumberRefused) {
        require(frame && *usual == *frame, "what is read quickly is read alike");
    }
    if (!frame) {
        require(!frame.error().message.isEmpty(), "a refusal says why");
        return 0;
    }
    if (const auto *response = std::get_if<ResponseFrame>(&*frame)) {
        checkOurRequest(response->id);
    }
    const auto *event = std::get_if<GatewayEvent>(&*frame);
    const auto *requested = event != nullptr ? std::get_if<ApprovalRequested>(event) : nullptr;
    if (requested != nullptr) {
        checkRequest(requested->item);
    }
    return 0;
}
