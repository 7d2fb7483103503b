// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QString>

namespace bram
{

/// How the audit log is.
struct AuditLogCondition {
    bool isWritable = true;
    QString problem {}; ///< why it is not, or was not the last time, in English
    quint64 lostEvents = 0; ///< in the last time that it was not writable, once that is over
    quint64 archivesDeletedEarly = 0; ///< since the start, for want of room

    bool operator==(const AuditLogCondition &) const = default;
};

/// Tells the main thread how the audit log is. It belongs to the store.
class AuditLogHealth final : public QObject
{
    Q_OBJECT

public:
    const AuditLogCondition &condition() const { return m_condition; }

    /// For the store, from any thread: takes effect in a later turn of the main thread.
    void report(const AuditLogCondition &condition);

Q_SIGNALS:
    void changed();

private:
    AuditLogCondition m_condition;
};

} // namespace bram
