// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "model/HonestDisplay.h"
#include "telegram/DecisionTexts.h"
#include "telegram/PendingMessage.h"
#include "telegram/TelegramBotApi.h"
#include "telegram/TelegramUpdates.h"

#include <QJsonArray>

#include <algorithm>
#include <array>

using namespace bram;
using namespace Qt::StringLiterals;
using bram::fuzz::require;

namespace
{
const QString token = u"123456:AAEhBOweik6ad9r_QXMENQjcrGbqCr4K-bc"_s;

void checkDecision(const WrittenDecision &written)
{
    const auto again = parseCallbackData(callbackData(written.decision, written.approvalId));
    require(again == written, "a button carries the decision that was read");
}

void checkUpdate(const QJsonObject &update)
{
    for (const auto key : {"message"_L1, "callback_query"_L1}) {
        const QJsonObject content = update.value(key).toObject();
        require(honestLine(senderOf(content)).text == senderOf(content)
                    || senderOf(content).contains(u'⟨'),
                "a sender is fit to be shown");
        isForwardedOrEdited(content);
        isFromAPerson(content);
        dateOf(content);
        parseChatIdFromMessage(content);
        parseChatIdFromCallbackQuery(content);
        if (const auto text = parseApprovalText(content)) {
            if (const auto written = parseApprovalCommand(*text)) {
                require(!written->approvalId.isEmpty() && !written->approvalId.contains(u' '),
                        "the id of a command is one word");
                checkDecision(*written);
            }
        }
        if (const auto written = parseCallbackData(content.value("data"_L1).toString())) {
            checkDecision(*written);
        }
    }
}

bool areMarksWhole(const QString &text)
{
    for (qsizetype at = text.indexOf(u'⟨'); at >= 0; at = text.indexOf(u'⟨', at + 1)) {
        const qsizetype next = text.indexOf(u'⟨', at + 1);
        const qsizetype end = text.indexOf(u'⟩', at);
        if (end < 0 || (next >= 0 && next < end) || end - at > 20) {
            return false;
        }
    }
    return true;
}

/// The input as requests with id, command and agent.
void checkRendering(const QString &text)
{
    QList<TelegramApprovalEntry> entries;
    for (const QString &line : text.split(u'|')) {
        entries.append({line.section(u'^', 0, 0), line.section(u'^', 1, 1), line.section(u'^', 2)});
    }
    constexpr std::array modes {TelegramMode::Polling, TelegramMode::PublishOnlyCommandPolling,
                                TelegramMode::PublishOnlySafe};
    const TokenMask mask(token);
    const ChatTerms mode {.mode = modes[static_cast<size_t>(text.size()) % modes.size()],
                          .mask = &mask};
    for (const TelegramApprovalEntry &entry : entries) {
        for (const QString &message : renderWholeCommand(entry, mode).messages) {
            require(message.size() < 4096 && areMarksWhole(message), "a part of a command fits");
        }
    }
    const QString shown = renderPendingText(entries, mode);
    require(shown.size() < 4096 && shown.isValidUtf16(), "a message fits");
    require(areMarksWhole(shown), "no mark is cut in half");
    require(listedCount(entries, mode) > 0, "the first request is always listed");
    const auto buttons = renderCallbackKeyboard(entries, mode).value_or(QJsonObject());
    for (const QJsonValue &row : buttons.value("inline_keyboard"_L1).toArray()) {
        for (const QJsonValue &button : row.toArray()) {
            require(button["callback_data"_L1].toString().toUtf8().size() <= 64,
                    "the data of a button fits");
        }
    }
    const auto keys = renderCommandKeyboard(entries, mode).value_or(QJsonObject());
    for (const QJsonValue &row : keys.value("keyboard"_L1).toArray()) {
        for (const QJsonValue &key : row.toArray()) {
            const QString said = key["text"_L1].toString();
            const auto written = parseApprovalCommand(said);
            const auto id
                = written ? written->approvalId : parseShowCommand(said).value_or(QString());
            require(std::ranges::any_of(entries,
                                        [&](const auto &entry) { return entry.approvalId == id; }),
                    "a key says a command about a request of the list");
        }
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const TokenMask mask(token);
    const QByteArray bytes = fuzz::toBytes(data, size);
    const auto answer = readBotApiAnswer(bytes, mask);
    if (!answer) {
        const QString why = answer.error().description();
        require(!why.contains(u'\n') && why.size() < 4096, "an error is one short line");
    } else {
        for (const QJsonValue &update : answer->value("result"_L1).toArray()) {
            checkUpdate(update.toObject());
        }
    }
    const QString text = fuzz::toText(bytes);
    const QString quoted = mask.masked(u"at /bot"_s + token + u'/'
                                       + text.first(std::min<qsizetype>(text.size(), 300)));
    require(!quoted.contains(token.last(20)), "the token is masked next to anything");
    checkRendering(text);
    return 0;
}
