// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/LineSource.h"

#include <utility>

namespace bram
{

void LineSource::setMomentSource(std::function<DialogueMoment()> momentSource)
{
    m_momentSource = std::move(momentSource);
}

void LineSource::printAbove(const std::function<void()> &print)
{
    print();
}

void LineSource::hideInput(bool) { }

DialogueMoment LineSource::moment() const
{
    return m_momentSource ? m_momentSource() : 0;
}

void LineSource::deliverLine(const QString &text, DialogueMoment begunAt)
{
    deliver([this, text, begunAt] { Q_EMIT lineEntered(text, begunAt); });
}

void LineSource::deliverRefusal(const QString &reason)
{
    deliver([this, reason] { Q_EMIT lineRefused(reason); });
}

void LineSource::deliverEnd()
{
    deliver([this] { Q_EMIT endOfInput(); });
}

void LineSource::deliver(std::function<void()> delivery)
{
    m_deliveries.append(std::move(delivery));
    if (m_deliveries.size() > 1) {
        return; // a turn for all of them has been asked for
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            const auto deliveries = std::exchange(m_deliveries, {});
            for (const auto &next : deliveries) {
                next();
            }
        },
        Qt::QueuedConnection);
}

} // namespace bram
