// SPDX-License-Identifier: Apache-2.0
#include "telegram/CallbackAnswers.h"

#include "system/BackgroundTasks.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int maxUnderWay = 3;
constexpr qsizetype maxWaiting = 100;
} // namespace

CallbackAnswers::CallbackAnswers(TelegramBotApi &api, BackgroundTasks &tasks)
    : m_api(api)
    , m_tasks(tasks)
{
    m_wakeUp.setSingleShot(true);
    connect(&m_wakeUp, &QTimer::timeout, this, &CallbackAnswers::next);
}

void CallbackAnswers::answerCallbackQuery(const QString &callbackId, const QString &text, Look look)
{
    if (m_waiting.size() < maxWaiting) {
        m_waiting.enqueue({{u"callback_query_id"_s, callbackId},
                           {u"text"_s, text},
                           {u"show_alert"_s, look == Look::Alert}});
    }
    next();
}

void CallbackAnswers::stop()
{
    m_waiting.clear();
    m_wakeUp.stop();
}

void CallbackAnswers::next()
{
    if (!m_waiting.isEmpty() && !m_callsFrom.hasExpired()) {
        m_wakeUp.start(
            std::chrono::ceil<std::chrono::milliseconds>(m_callsFrom.remainingTimeAsDuration()));
        return;
    }
    while (!m_waiting.isEmpty() && m_underWay < maxUnderWay) {
        ++m_underWay;
        m_tasks.spawn(send(this, m_waiting.dequeue()), u"button answer"_s);
    }
}

QCoro::Task<> CallbackAnswers::send(QPointer<CallbackAnswers> self, QJsonObject payload)
{
    const auto result = co_await self->m_api.call(u"answerCallbackQuery"_s, payload);
    if (!self) {
        co_return;
    }
    --self->m_underWay;
    if (!result && result.error().retryAfter) {
        self->m_callsFrom = QDeadlineTimer(*result.error().retryAfter);
    }
    self->next();
}

} // namespace bram
