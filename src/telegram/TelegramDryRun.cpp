// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramDryRun.h"

#include "audit/Redaction.h"
#include "model/TextRules.h"
#include "telegram/TokenMask.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype maxCharacters = 450;

QJsonValue resultOf(const QString &method)
{
    if (method == "sendMessage"_L1) {
        return QJsonObject {
            {u"message_id"_s, 10'000 + QRandomGenerator::global()->bounded(90'000)}};
    }
    if (method == "editMessageText"_L1 || method == "answerCallbackQuery"_L1) {
        return true;
    }
    return method == "getUpdates"_L1 ? QJsonValue(QJsonArray()) : QJsonValue(QJsonObject());
}
} // namespace

QString dryRunPayloadDescription(const QJsonObject &payload, const TokenMask &mask)
{
    // A command in it may call the Bot API with this very bot.
    const QByteArray json
        = mask.withoutToken(QJsonDocument(payload).toJson(QJsonDocument::Compact));
    const QString text = redacted(QString::fromUtf8(json));
    const QString start = firstCharacters(text, maxCharacters);
    return start.size() < text.size() ? start + u"..."_s : text;
}

QJsonObject dryRunAnswer(const QString &method)
{
    return {{u"ok"_s, true}, {u"result"_s, resultOf(method)}};
}

} // namespace bram
