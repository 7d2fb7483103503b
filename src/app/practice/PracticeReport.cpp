// SPDX-License-Identifier: Apache-2.0
#include "app/practice/PracticeReport.h"

#include "model/HonestDisplay.h"
#include "practice/PracticeGateway.h"

#include <cstdio>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
QString outcomeText(const ReceivedDecision &decision)
{
    switch (decision.outcome) {
    case PracticeAnswer::Accepted:
        return u"accepted"_s;
    case PracticeAnswer::Unanswered:
        return u"unanswered"_s;
    case PracticeAnswer::Refused:
        break;
    }
    return u"refused: "_s + honestLine(decision.refusal).text;
}
} // namespace

void printLine(const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

void reportGateway(PracticeGateway &gateway, QObject *context)
{
    QObject::connect(&gateway, &PracticeGateway::clientAuthenticated, context,
                     [] { printLine(u"client connected"_s); });
    QObject::connect(&gateway, &PracticeGateway::clientRefused, context, [](const QString &reason) {
        printLine(u"client refused: "_s + honestLine(reason).text);
    });
    QObject::connect(&gateway, &PracticeGateway::announced, context, [](const ApprovalItem &item) {
        printLine(u"request %1 %2 %3"_s.arg(honestLine(item.approvalId).text,
                                            honestLine(item.agentId.value_or(u"-"_s)).text,
                                            honestLine(item.command).text));
    });
    QObject::connect(&gateway, &PracticeGateway::decisionReceived, context,
                     [](const ReceivedDecision &decision) {
                         printLine(u"decision %1 %2 %3"_s.arg(honestLine(decision.approvalId).text,
                                                              rawText(decision.decision),
                                                              outcomeText(decision)));
                     });
    QObject::connect(&gateway, &PracticeGateway::resolvedElsewhere, context,
                     [](const QString &approvalId) {
                         printLine(u"resolved %1 elsewhere"_s.arg(honestLine(approvalId).text));
                     });
}

} // namespace bram
