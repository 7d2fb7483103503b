// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QObject>
#include <QTimer>

#include <chrono>

class QNetworkReply;

namespace bram
{

/// One HTTP call under way: collects the answer, within a time limit and a size limit, reports once and is
/// gone. Deleting it before that ends the call without a report.
class BotApiCall final : public QObject
{
    Q_OBJECT

public:
    /// Takes over the reply.
    BotApiCall(QNetworkReply *reply, std::chrono::seconds timeLimit, QObject *parent);
    ~BotApiCall() override;

Q_SIGNALS:
    /// A whole answer has come, whatever its HTTP status.
    void answered(const QByteArray &body);
    /// There is none. The text may quote the address.
    void failed(const QString &why);

private:
    void read();
    void finish();
    void fail(const QString &why);
    /// Drops the reply; nothing is heard from it any more.
    void end();

    QNetworkReply *m_reply; ///< null once over
    QByteArray m_body;
    QTimer m_timeLimit;
};

} // namespace bram
