// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/OperatorChat.h"
#include "practice/PracticeBotApi.h"

namespace bram
{

/// One chat of the practice Bot API, for the front-ends.
class PracticeOperatorChat final : public OperatorChat
{
    Q_OBJECT

public:
    /// `api` outlives this.
    PracticeOperatorChat(PracticeBotApi &api, qint64 chatId);

    QList<Message> messages() const override;
    ButtonRows keys() const override;
    bool press(int number) override;
    void say(const QString &text) override;

private:
    PracticeBotApi &m_api;
    qint64 m_chatId;
};

} // namespace bram
