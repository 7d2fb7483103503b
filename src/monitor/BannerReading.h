// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QHash>
#include <QString>

#include <chrono>

namespace bram
{

class Clock;

/// When *allow* on a notification counts. Notification services stack what they show, and move the rest when one
/// comes or goes: then a click that was meant for one lands on another. So it counts once the notification has
/// been on the screen for its reading time, and a while after the stack has last moved.
class BannerReading
{
public:
    /// For a short and plain command of ordinary risk; also how long a new notification holds the others.
    static constexpr std::chrono::milliseconds usualTime {700};
    static constexpr std::chrono::milliseconds highRiskTime = 2 * usualTime;
    /// After one has gone: answered, closed, replaced or withdrawn.
    static constexpr std::chrono::milliseconds timeAfterOneHasGone {1000};

    explicit BannerReading(const Clock &clock);

    /// It has come to the screen, for the first time or in a new form.
    void came(const QString &tag, std::chrono::milliseconds readingTime);
    /// It is not asked about any more; says nothing about the screen.
    void forget(const QString &tag);
    /// Some notification has come or gone, this program's or another's.
    void oneHasCome();
    void oneHasGone();

    bool isRead(const QString &tag) const;

private:
    bool isOver(qint64 beginMs, std::chrono::milliseconds time) const;

    struct Banner {
        qint64 cameAtMs = 0;
        std::chrono::milliseconds readingTime {};
    };

    const Clock &m_clock;
    QHash<QString, Banner> m_banners; ///< by tag
    qint64 m_lastCameMs = 0;
    qint64 m_lastWentMs = 0;
};

} // namespace bram
