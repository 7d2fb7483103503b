// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QQueue>
#include <QSet>
#include <QString>

#include <optional>

namespace bram
{

/// Ids in the order in which they came, and not too many: for one too many the oldest is forgotten.
class RecentIds
{
public:
    static constexpr qsizetype maxIds = 1000;

    /// The result is the id forgotten for it, if there is one.
    std::optional<QString> add(const QString &id)
    {
        if (m_ids.contains(id)) {
            return std::nullopt;
        }
        m_ids.insert(id);
        m_order.enqueue(id);
        if (m_order.size() <= maxIds) {
            return std::nullopt;
        }
        const QString oldest = m_order.dequeue();
        m_ids.remove(oldest);
        return oldest;
    }
    void remove(const QString &id)
    {
        if (m_ids.remove(id)) {
            m_order.removeOne(id);
        }
    }
    void clear()
    {
        m_ids.clear();
        m_order.clear();
    }

private:
    QSet<QString> m_ids;
    QQueue<QString> m_order;
};

} // namespace bram
