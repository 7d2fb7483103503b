// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditEventRecord.h"
#include "audit/AuditLogFiles.h"
#include "audit/AuditLogHealth.h"

#include <QList>
#include <QUrl>

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace bram
{

class SystemLog;

/// Keeps every approval event on record: JSON lines in "audit-events.jsonl", rotated by size and
/// age into archives beside it, which are pruned by age and number. All file work happens in order
/// on a thread of the store's own, so that a decision never waits for the disk.
///
/// A caller hears of no failure: lines that cannot be written are lost, with one line in the system
/// log for them together, and the next ones are tried again. `health()` says so while it lasts, and a record
/// says how many were lost once it is over; that is tried again and again. Lines wait in memory only while the
/// disk does not take them; past `AuditLogLimits::maxPendingBytes` new ones are lost, and that is
/// logged too.
///
/// Every operation but `health()` may be called on any thread.
class AuditLogStore
{
public:
    /// `directory` is the absolute path of the application-support folder. Starts the thread;
    /// touches no file before the first append. `log` outlives the store and takes lines from any
    /// thread.
    AuditLogStore(const QString &directory, const AuditLogLimits &limits, SystemLog &log);

    /// Returns when everything handed over is written, or has failed to be.
    ~AuditLogStore();
    Q_DISABLE_COPY_MOVE(AuditLogStore)

    /// Encodes the record here and now, hands its line over and returns. Never waits for the disk.
    void append(const AuditEventRecord &record);

    /// Every readable record from `sinceMs` on (milliseconds since the epoch, inclusive): the
    /// current file's, then the archives', in the order of the files and their lines, not sorted by
    /// time. Lines that are no records are passed over; a file that cannot be read is logged and
    /// passed over. Sees everything appended before, and therefore waits for the disk: a full log
    /// is hundreds of megabytes, so call it away from the main thread.
    QList<AuditEventRecord> records(qint64 sinceMs);

    /// The files of the log, for a copy of it: the current one if it exists, then the archives,
    /// oldest first. Sees everything appended before, as `records` does.
    QList<QUrl> diagnosticLogFileURLs();

    /// The same files, opened for reading: the log as it was at this moment, to be gone through while the store
    /// goes on writing, rotating and pruning. A file that cannot be read is logged and left out. Waits for the
    /// disk.
    std::vector<AuditLogFile> openLogFiles();

    /// How the log is, for the thread that made the store.
    const AuditLogHealth &health() const { return m_health; }

    /// Waits until everything appended before is written, or has failed to be.
    void flush();

private:
    using Job = std::packaged_task<void()>;

    void runInOrder(std::function<void()> work);
    void serve();
    void waitForWork(std::unique_lock<std::mutex> &lock, bool isInGap);
    bool hasWork() const { return !m_pending.empty() || !m_jobs.empty(); }

    const std::filesystem::path m_directory;
    const AuditLogLimits m_limits;
    SystemLog &m_log;
    AuditLogHealth m_health;

    std::mutex m_mutex; ///< guards what follows, up to the thread
    std::condition_variable m_wake;
    std::string m_pending; ///< encoded lines that the thread has not taken
    std::deque<Job> m_jobs; ///< to be run once the pending lines are written
    quint64 m_refusedLines = 0; ///< lost for want of memory since the thread last looked
    bool m_isLingering = false; ///< the thread looks for more lines soon, without being called
    bool m_stopping = false;

    std::thread m_thread;
};

} // namespace bram
