// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/ChatCommands.h"

#include "model/HonestDisplay.h"
#include "ui/terminal/TerminalRows.h"
#include "ui/terminal/TerminalTr.h"
#include "ui/terminal/TerminalVoice.h"

namespace bram
{

using namespace Qt::StringLiterals;

ChatCommands::ChatCommands(OperatorChat *chat, TerminalVoice &voice)
    : m_chat(chat)
    , m_voice(voice)
{
    if (m_chat != nullptr) {
        connect(m_chat, &OperatorChat::answered, this, [this](const QString &text) {
            m_voice.say(TerminalTr::tr("The chat answers: ") + honestLine(text).text);
        });
    }
}

void ChatCommands::carryOut(const ChatCommand &command)
{
    if (m_chat == nullptr) {
        m_voice.say(TerminalTr::tr("There is a chat only in practice mode (bram --practice)."),
                    LineStyle::Warning);
        return;
    }
    switch (command.kind) {
    case ChatCommand::Kind::Show:
        show();
        break;
    case ChatCommand::Kind::Press:
        if (!m_chat->press(command.number)) {
            m_voice.say(TerminalTr::tr("The chat has no button %1 (`chat` shows them).")
                            .arg(command.number),
                        LineStyle::Warning);
        }
        break;
    case ChatCommand::Kind::Say:
        m_chat->say(command.text);
        break;
    }
}

void ChatCommands::show()
{
    const auto messages = m_chat->messages();
    if (messages.isEmpty()) {
        m_voice.say(TerminalTr::tr("The chat is empty."));
        return;
    }
    for (const OperatorChat::Message &message : messages) {
        const QString who = message.isFromBot ? TerminalTr::tr("bot | ") : TerminalTr::tr("you | ");
        TerminalLines lines;
        for (const QString &line : message.text.split(u'\n')) {
            appendRows(lines, who, who, line, LineStyle::Plain, m_voice.columns(),
                       RowBreaks::AtBlanks);
        }
        m_voice.print(lines);
        showRows(message.buttons);
    }
    showRows(m_chat->keys());
}

void ChatCommands::showRows(const OperatorChat::ButtonRows &rows)
{
    TerminalLines lines;
    for (const auto &row : rows) {
        QStringList buttons;
        for (const OperatorChat::Button &button : row) {
            buttons.append(u"%1) [%2]"_s.arg(QString::number(button.number), button.text));
        }
        appendRows(lines, u"    "_s, u"    "_s, buttons.join(u"  "_s), LineStyle::Strong,
                   m_voice.columns(), RowBreaks::AtBlanks);
    }
    m_voice.print(lines);
}

} // namespace bram
