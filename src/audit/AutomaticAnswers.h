// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditLogFiles.h"

#include <QHash>
#include <QString>

#include <atomic>
#include <optional>
#include <vector>

namespace bram
{

class SystemLog;

/// What the note of a record says of an answer that an entry of the always-allow list gave: a word, and the beginning of
/// the entry's digest.
QString automaticAnswerNote(const QString &digest);

/// When entries of the always-allow list have last answered a request, as far as the audit log tells.
class AutomaticAnswers
{
public:
    /// Milliseconds since the epoch.
    std::optional<qint64> lastAnswerMs(const QString &digest) const;
    /// When the oldest event in the log was.
    std::optional<qint64> logSinceMs() const { return m_logSinceMs; }

    /// Goes through the whole log; nothing is kept of it but one time for each entry. Nothing when cancelled. A file
    /// that cannot be read to its end is logged and counts as far as it goes. For a thread other than the main one;
    /// `log` takes lines from any thread.
    static std::optional<AutomaticAnswers> find(const std::vector<AuditLogFile> &files,
                                                const std::atomic<bool> &isCancelled,
                                                SystemLog &log);

private:
    QHash<QByteArray, qint64> m_lastAnswerMs; ///< by the beginning of the digest
    std::optional<qint64> m_logSinceMs;
};

} // namespace bram
