// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "telegram/TelegramBotApi.h"

#include <QCoro/QCoroTask>
#include <QDeadlineTimer>
#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QQueue>
#include <QTimer>

namespace bram
{

class BackgroundTasks;

/// Tells people what came of their button presses. A few at a time, and none while Telegram asks to wait; what
/// cannot be told is dropped. Main thread only.
class CallbackAnswers final : public QObject
{
    Q_OBJECT

public:
    CallbackAnswers(TelegramBotApi &api, BackgroundTasks &tasks);

    enum class Look {
        Note, ///< at the top of the chat, for a moment
        Alert, ///< has to be closed
    };
    void answerCallbackQuery(const QString &callbackId, const QString &text, Look look);

    void stop();

private:
    void next();
    static QCoro::Task<> send(QPointer<CallbackAnswers> self, QJsonObject payload);

    TelegramBotApi &m_api;
    BackgroundTasks &m_tasks;
    QQueue<QJsonObject> m_waiting;
    int m_underWay = 0;
    QDeadlineTimer m_callsFrom; ///< before that, none
    QTimer m_wakeUp; ///< runs only while an answer has to wait
};

} // namespace bram
