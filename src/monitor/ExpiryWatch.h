// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalItem.h"

#include <QHash>
#include <QObject>
#include <QTimer>

#include <optional>
#include <set>
#include <utility>

namespace bram
{

class Clock;

/// Tells when the time of a request is over, with one timer for the earliest of them. The clock may be set
/// meanwhile: back, and the request has longer; forward, and it is noticed with the next request, decision
/// or timer. Main thread only.
class ExpiryWatch final : public QObject
{
    Q_OBJECT

public:
    explicit ExpiryWatch(const Clock &clock);

    /// Follows the request from now on, or in its new form; nothing to follow when it does not expire.
    void watch(const ApprovalItem &item);
    void forget(const QString &approvalId);
    void clear();

Q_SIGNALS:
    /// Its time is over, and it is followed no more. Never comes from inside a call.
    void expired(const QString &approvalId);

private:
    using Expiry = std::pair<qint64, QString>; ///< when, and which request

    void drop(const QString &approvalId);
    void schedule();
    void reportExpired();

    const Clock &m_clock;
    QHash<QString, qint64> m_expiresAtMs; ///< by approval id
    std::set<Expiry> m_inOrder;
    QTimer m_timer;
    std::optional<qint64> m_timerIsForMs; ///< the expiry for which it runs
};

} // namespace bram
