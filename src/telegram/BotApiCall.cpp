// SPDX-License-Identifier: Apache-2.0
#include "telegram/BotApiCall.h"

#include <QNetworkReply>

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// A hundred updates with the longest messages and what they answer to are a third of it.
constexpr qsizetype maxBodyBytes = 16 * 1024 * 1024;

/// Whether the answer did not come, or not wholly. What HTTP itself refuses is an answer.
bool isUnanswered(const QNetworkReply &reply)
{
    const auto error = reply.error();
    const bool hasStatus = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
    return error != QNetworkReply::NoError
        && (!hasStatus || error < QNetworkReply::ContentAccessDenied);
}
} // namespace

BotApiCall::BotApiCall(QNetworkReply *reply, std::chrono::seconds timeLimit, QObject *parent)
    : QObject(parent)
    , m_reply(reply)
{
    reply->setParent(this);
    connect(reply, &QNetworkReply::readyRead, this, &BotApiCall::read);
    connect(reply, &QNetworkReply::finished, this, &BotApiCall::finish);
    m_timeLimit.setSingleShot(true);
    m_timeLimit.setTimerType(Qt::PreciseTimer);
    connect(&m_timeLimit, &QTimer::timeout, this,
            [this, timeLimit] { fail(u"no answer within %1 s"_s.arg(timeLimit.count())); });
    m_timeLimit.start(timeLimit);
}

BotApiCall::~BotApiCall()
{
    end();
}

void BotApiCall::read()
{
    m_body += m_reply->readAll();
    if (m_body.size() > maxBodyBytes) {
        fail(u"the answer is too long"_s);
    }
}

void BotApiCall::finish()
{
    read();
    if (m_reply == nullptr) {
        return;
    }
    if (isUnanswered(*m_reply)) {
        fail(m_reply->errorString());
        return;
    }
    end();
    deleteLater();
    Q_EMIT answered(m_body);
}

void BotApiCall::fail(const QString &why)
{
    const QString reason = why; // perhaps the reply's own
    end();
    deleteLater();
    Q_EMIT failed(reason);
}

void BotApiCall::end()
{
    m_timeLimit.stop();
    if (auto *reply = std::exchange(m_reply, nullptr)) {
        reply->disconnect(this);
        reply->setParent(reply->manager()); // which must not go before it
        reply->abort();
        reply->deleteLater();
    }
}

} // namespace bram
