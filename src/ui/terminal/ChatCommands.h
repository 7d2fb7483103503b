// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/OperatorChat.h"
#include "ui/terminal/CommandLine.h"

namespace bram
{

class TerminalVoice;

/// The commands about the practice mode's chat, in which the operator is the person with the phone. Main thread.
class ChatCommands final : public QObject
{
    Q_OBJECT

public:
    /// `chat` is null outside of practice; then the commands say so.
    ChatCommands(OperatorChat *chat, TerminalVoice &voice);

    void carryOut(const ChatCommand &command);

private:
    void show();
    void showRows(const OperatorChat::ButtonRows &rows);

    OperatorChat *m_chat;
    TerminalVoice &m_voice;
};

} // namespace bram
