// SPDX-License-Identifier: Apache-2.0
#include "app/PracticeOperatorChat.h"

#include "model/HonestDisplay.h"

#include <QRegularExpression>

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// The bot's texts hold marks already, which would be marked again.
QString fitToBeShown(const PracticeMessage &message)
{
    if (!message.isFromBot) {
        return honestDisplay(message.text).text;
    }
    static const QRegularExpression mark(u"⟨(U\\+[0-9A-F]{4,6}|[0-9]+ (blanks?|line feeds))⟩"_s);
    QString result;
    qsizetype begin = 0;
    for (auto found = mark.globalMatch(message.text); found.hasNext();) {
        const auto match = found.next();
        result += honestDisplay(message.text.sliced(begin, match.capturedStart() - begin)).text;
        result += match.captured();
        begin = match.capturedEnd();
    }
    return result + honestDisplay(message.text.sliced(begin)).text;
}

OperatorChat::ButtonRows numbered(const QList<QList<PracticeButton>> &rows, int &number)
{
    OperatorChat::ButtonRows result;
    for (const auto &row : rows) {
        QList<OperatorChat::Button> buttons;
        for (const PracticeButton &button : row) {
            buttons.append({.number = ++number, .text = honestLine(button.text).text});
        }
        result.append(buttons);
    }
    return result;
}
} // namespace

PracticeOperatorChat::PracticeOperatorChat(PracticeBotApi &api, qint64 chatId)
    : m_api(api)
    , m_chatId(chatId)
{
    connect(&api, &PracticeBotApi::chatChanged, this, [this](qint64 changedId) {
        if (changedId == m_chatId) {
            Q_EMIT changed();
        }
    });
    connect(&api, &PracticeBotApi::queryAnswered, this,
            [this](const BotQueryAnswer &answer) { Q_EMIT answered(answer.text); });
}

QList<OperatorChat::Message> PracticeOperatorChat::messages() const
{
    QList<Message> result;
    int number = 0;
    for (const PracticeMessage &message : m_api.chats().messages(m_chatId)) {
        result.append(
            {.isFromBot = message.isFromBot,
             .text = fitToBeShown(message),
             .buttons = message.areKeys ? ButtonRows() : numbered(message.buttons, number)});
    }
    return result;
}

OperatorChat::ButtonRows PracticeOperatorChat::keys() const
{
    int number = 0;
    ButtonRows result;
    const auto all = m_api.chats().messages(m_chatId);
    for (const PracticeMessage &message : all) {
        if (!message.areKeys) {
            numbered(message.buttons, number);
        }
    }
    for (const PracticeMessage &message : all) {
        if (message.areKeys) {
            int keyNumber = number;
            result = numbered(message.buttons, keyNumber);
        }
    }
    return result;
}

bool PracticeOperatorChat::press(int number)
{
    return m_api.press(m_chatId, number).has_value();
}

void PracticeOperatorChat::say(const QString &text)
{
    m_api.say(m_chatId, text);
}

} // namespace bram
