// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditLogStore.h"

#include "audit/AuditLogKeeper.h"
#include "audit/AuditRecordCodec.h"

#include <QFile>

#include <chrono>
#include <pthread.h>
#include <signal.h>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
/// Buffers that a burst has made larger than this are given back when the thread goes idle.
constexpr std::size_t keptBufferBytes = 65'536;

/// The events of one decision come within moments of each other, and so do those of a busy agent. So that
/// they cost one batch and not one each, and so that a caller need not wake the thread up each time, it looks
/// for more by itself after this long, unless much is there already or somebody waits for it.
constexpr auto linger = 25ms;
constexpr std::size_t lingerBytes = 16'384;

/// How long to wait before looking whether a log that could not be written takes records again.
constexpr auto retryInterval = 2s;

const QString diskDoesNotAnswer = u"the disk does not answer and no more events can wait"_s;

/// Signals belong to the main thread. Besides, a file size limit then shows as a failed write here
/// instead of ending the program by SIGXFSZ.
void becomeBackgroundThread()
{
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    pthread_setname_np(pthread_self(), "audit-log");
}

void releaseIfLarge(std::string &buffer)
{
    if (buffer.capacity() > keptBufferBytes) {
        std::string().swap(buffer);
    }
}
} // namespace

AuditLogStore::AuditLogStore(const QString &directory, const AuditLogLimits &limits, SystemLog &log)
    : m_directory(QFile::encodeName(directory).toStdString())
    , m_limits(limits)
    , m_log(log)
    , m_thread([this] { serve(); })
{
}

AuditLogStore::~AuditLogStore()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

void AuditLogStore::append(const AuditEventRecord &record)
{
    bool mustWake = false;
    bool firstRefused = false;
    {
        const std::scoped_lock lock(m_mutex);
        if (m_pending.size() < m_limits.maxPendingBytes) {
            const std::size_t before = m_pending.size();
            appendAuditLine(record, m_pending);
            // While lines wait, a thread that sleeps has been called already.
            mustWake = m_isLingering ? before < lingerBytes && m_pending.size() >= lingerBytes
                                     : before == 0;
        } else {
            firstRefused = m_refusedLines++ == 0;
            if (firstRefused) {
                // Within the lock: the thread must not report that it works again before this.
                m_health.report({.isWritable = false, .problem = diskDoesNotAnswer});
            }
        }
    }
    if (mustWake) {
        m_wake.notify_one();
    }
    if (firstRefused) {
        logAuditFailure(m_log, u"append", diskDoesNotAnswer);
    }
}

QList<AuditEventRecord> AuditLogStore::records(qint64 sinceMs)
{
    QList<AuditEventRecord> records;
    runInOrder([&] {
        AuditRecordDecoder decoder;
        const auto keep = [&](std::string_view line) {
            if (auto record = decoder.decode(line); record && record->timestampMs >= sinceMs) {
                records.append(*std::move(record));
            }
        };
        for (const auto &file : auditLogFilesForSummary(m_directory)) {
            if (const auto read = streamAuditLogLines(file, keep); !read) {
                logAuditFailure(m_log, u"read", read.error().message);
            }
        }
    });
    return records;
}

QList<QUrl> AuditLogStore::diagnosticLogFileURLs()
{
    QList<QUrl> urls;
    runInOrder([&] {
        for (const auto &file : auditLogFilesForSummary(m_directory)) {
            urls.append(QUrl::fromLocalFile(QFile::decodeName(file.c_str())));
        }
    });
    return urls;
}

std::vector<AuditLogFile> AuditLogStore::openLogFiles()
{
    std::vector<AuditLogFile> files;
    runInOrder([&] {
        for (const auto &path : auditLogFilesForSummary(m_directory)) {
            if (auto file = AuditLogFile::open(path)) {
                files.push_back(*std::move(file));
            } else {
                logAuditFailure(m_log, u"read", file.error().message);
            }
        }
    });
    return files;
}

void AuditLogStore::flush()
{
    runInOrder([] { });
}

/// Runs `work` on the thread, after the lines appended so far, and waits for its end.
void AuditLogStore::runInOrder(std::function<void()> work)
{
    Job job(std::move(work));
    auto done = job.get_future();
    {
        const std::scoped_lock lock(m_mutex);
        m_jobs.push_back(std::move(job));
    }
    m_wake.notify_one();
    done.get();
}

/// While events are being lost, not for ever.
void AuditLogStore::waitForWork(std::unique_lock<std::mutex> &lock, bool isInGap)
{
    const auto isDue = [this] { return m_stopping || hasWork(); };
    if (isInGap) {
        m_wake.wait_for(lock, retryInterval, isDue);
    } else {
        m_wake.wait(lock, isDue);
    }
}

/// The thread: takes all that comes within a moment, writes it as one batch, and sleeps when nothing comes.
void AuditLogStore::serve()
{
    becomeBackgroundThread();
    std::string lines;
    std::deque<Job> jobs;
    AuditLogKeeper keeper(m_directory, m_limits, m_health, m_log);
    std::unique_lock lock(m_mutex);
    while (true) {
        m_isLingering = true;
        m_wake.wait_for(lock, linger, [this] {
            return m_stopping || !m_jobs.empty() || m_pending.size() >= lingerBytes;
        });
        m_isLingering = false;
        if (!hasWork()) {
            releaseIfLarge(lines);
            releaseIfLarge(m_pending);
            lock.unlock();
            keeper.rest();
            lock.lock();
            waitForWork(lock, keeper.isInGap());
            if (hasWork()) {
                continue;
            }
            lock.unlock();
            keeper.tryToEndGap();
            lock.lock();
            if (m_stopping && !hasWork()) {
                return;
            }
            continue;
        }
        // The two buffers take turns, so that a burst does not allocate for each batch.
        lines.swap(m_pending);
        jobs.swap(m_jobs);
        const quint64 refused = std::exchange(m_refusedLines, 0);
        lock.unlock();

        if (refused > 0) {
            keeper.addLost(refused, u"while the disk did not answer"_s);
        }
        if (!lines.empty()) {
            keeper.append(lines);
            lines.clear();
        }
        for (Job &job : jobs) {
            job();
        }
        jobs.clear();
        lock.lock();
    }
}

} // namespace bram
