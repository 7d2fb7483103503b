// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditFixture.h"
#include "support/FullDisk.h"
#include "support/Waiting.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <functional>
#include <latch>
#include <sys/resource.h>
#include <thread>

namespace bram::test
{

using namespace Qt::StringLiterals;

namespace
{
using AuditStore = AuditTest;

const QByteArray smallLine = "{\"timestampMs\":1,\"kind\":\"approval_resolved\"}\n";

/// No file of this process may grow past `bytes`: a full disk that a test can have.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit {bytes, m_before.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    Q_DISABLE_COPY_MOVE(FileSizeLimit)

private:
    rlimit m_before = {};
};

/// Holds whoever writes the first line until it is let go: a disk that does not answer.
class StuckLog final : public SystemLog
{
public:
    void write(QStringView line) override
    {
        if (m_isFirst.exchange(false)) {
            reached.count_down();
            letGo.wait();
        }
        record.write(line);
    }
    std::latch reached {1};
    std::latch letGo {1};
    RecordingLog record;

private:
    std::atomic<bool> m_isFirst = true;
};
} // namespace

TEST_F(AuditStore, theFirstAppendMakesAPrivateFolderAndFile)
{
    {
        AuditLogStore store(folder, {}, log);
        EXPECT_TRUE(store.records(0).isEmpty());
        EXPECT_TRUE(store.diagnosticLogFileURLs().isEmpty());
        EXPECT_FALSE(QFile::exists(folder));
    }
    const mode_t before = ::umask(0);
    append({record(1)});
    ::umask(before);
    EXPECT_EQ(current(), smallLine);
    EXPECT_TRUE(others().isEmpty());
    EXPECT_EQ(mode(path(currentName)), 0600u);
    EXPECT_EQ(mode(folder), 0700u);
    EXPECT_EQ(mode(temporary.filePath(u"data"_s)), 0700u);
    EXPECT_EQ(log.lines(), QStringList());
}

TEST_F(AuditStore, aFileThatOthersMayReadIsNarrowedAndGoesOn)
{
    writeFile(currentName, smallLine);
    ASSERT_EQ(::chmod(QFile::encodeName(path(currentName)).constData(), 0664), 0);
    append({record(1)});
    EXPECT_EQ(mode(path(currentName)), 0600u);
    EXPECT_EQ(current(), smallLine + smallLine);
    EXPECT_EQ(log.lines(), QStringList());
}

TEST_F(AuditStore, readsSeeEverythingAppendedBeforeThem)
{
    AuditLogStore store(folder, {}, log);
    QList<qint64> expected;
    for (qint64 time = 0; time < 300; ++time) {
        store.append(record(time));
        expected.append(time);
        ASSERT_EQ(times(store.records(0)), expected);
    }
    EXPECT_EQ(times(store.records(298)), (QList<qint64> {298, 299}));
    EXPECT_TRUE(store.records(300).isEmpty());
}

TEST_F(AuditStore, anEventIsWrittenWithoutAnybodyAskingForIt)
{
    AuditLogStore store(folder, {}, log);
    store.append(record(1));
    EXPECT_TRUE(waitUntil([this] { return current() == smallLine; }));
    store.append(record(1));
    EXPECT_TRUE(waitUntil([this] { return current() == smallLine + smallLine; }));
}

TEST_F(AuditStore, everythingHandedOverByAnyThreadIsWrittenAtTheEnd)
{
    constexpr qint64 perThread = 20'000;
    {
        AuditLogStore store(folder, {}, log);
        std::vector<std::jthread> threads;
        for (qint64 thread = 0; thread < 3; ++thread) {
            threads.emplace_back([&store, thread] {
                for (qint64 i = 0; i < perThread; ++i) {
                    store.append(record(thread * perThread + i, u"결제"_s));
                }
            });
        }
    }
    EXPECT_TRUE(current().endsWith('\n'));
    AuditLogStore store(folder, {}, log);
    auto found = times(store.records(0));
    ASSERT_EQ(found.size(), 3 * perThread);
    std::ranges::sort(found);
    for (qint64 i = 0; i < found.size(); ++i) {
        ASSERT_EQ(found[i], i);
    }
    EXPECT_EQ(log.lines(), QStringList());
}

TEST_F(AuditStore, linesThatAreNoRecordsArePassedOver)
{
    QByteArray bytes = smallLine + "\n{}\ngarbage\n\xff\xfe\n" + "{\"timestampMs\":1,\"kind\":\""
        + QByteArray(17 * 1024 * 1024, 'x') + "\"}\n" + QByteArray(3, '\0') + "\n" + smallLine;
    bytes.chop(1); // the last line is whole but for its line feed
    writeFile(currentName, bytes);
    writeFile(u"audit-events-1.jsonl"_s, "{\"timestampMs\":2,\"kind\":\"x\"}\n{\"timestampMs\":3,");
    AuditLogStore store(folder, {.maxBytes = 100'000'000}, log);
    EXPECT_EQ(times(store.records(0)), (QList<qint64> {1, 1, 2}));
    store.append(record(4));
    EXPECT_EQ(times(store.records(0)), (QList<qint64> {1, 1, 4, 2}));
    EXPECT_EQ(log.lines(), QStringList());
}

TEST_F(AuditStore, aTornLastLineDoesNotSwallowTheNextRecord)
{
    writeFile(currentName, smallLine + "{\"timestampMs\":2,\"ki");
    append({record(1), record(1)});
    EXPECT_EQ(current(), smallLine + "{\"timestampMs\":2,\"ki\n" + smallLine + smallLine);
}

TEST_F(AuditStore, aFileThatAnotherHandChangesBetweenTwoEventsIsLookedAtAnew)
{
    const QByteArray encodedName = QFile::encodeName(path(currentName));
    const char *name = encodedName.constData();
    const QByteArray encodedCopy = QFile::encodeName(path(u"copy"_s));
    const char *elsewhere = encodedCopy.constData();
    const struct {
        const char *what;
        std::function<void()> change;
        QByteArray expected;
    } cases[] = {
        {"nothing", [] {}, smallLine + smallLine},
        {"removed", [&] { ASSERT_EQ(::unlink(name), 0); }, smallLine},
        {"moved away", [&] { ASSERT_EQ(::rename(name, elsewhere), 0); }, smallLine},
        {"replaced",
         [&] {
             ASSERT_EQ(::rename(name, elsewhere), 0);
             writeFile(currentName, "another\n");
         },
         "another\n" + smallLine},
        {"emptied", [&] { ASSERT_EQ(::truncate(name, 0), 0); }, smallLine},
        {"torn", [&] { ASSERT_EQ(::truncate(name, 9), 0); }, smallLine.left(9) + '\n' + smallLine},
        {"opened to all", [&] { ASSERT_EQ(::chmod(name, 0666), 0); }, smallLine + smallLine},
        {"folder removed", [&] { QDir(folder).removeRecursively(); }, smallLine},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        QDir(folder).removeRecursively();
        AuditLogStore store(folder, {}, log);
        store.append(record(1));
        store.flush();
        c.change();
        store.append(record(1));
        store.flush();
        EXPECT_EQ(current(), c.expected);
        EXPECT_EQ(mode(path(currentName)), 0600u);
    }
    EXPECT_EQ(log.lines(), QStringList());
}

TEST_F(AuditStore, aWriteThatFailsPartWayIsCutBackAndLaterOnesGoOn)
{
    const auto fileSizeSignal = std::signal(SIGXFSZ, SIG_IGN);
    const auto size = smallLine.size();
    const QString failure
        = u"[Brackwen][Audit] append failed: "_s + path(currentName) + u": File too large"_s;
    // One line more or less, in a new file and at the end of one with a torn last line.
    {
        const FileSizeLimit limit(static_cast<rlim_t>(size + 10));
        append({record(1, u"too long for what is left of the disk, by far"_s)});
        EXPECT_TRUE(QDir(folder).isEmpty());
        append({record(1)});
        append({record(1)});
        EXPECT_EQ(current(), smallLine);
    }
    EXPECT_EQ(log.lines(), (QStringList {failure, failure}));
    writeFile(currentName, smallLine + "torn");
    {
        const FileSizeLimit limit(static_cast<rlim_t>(3 * size));
        append({record(1)});
        append({record(1)});
        EXPECT_EQ(current(), smallLine + "torn\n" + smallLine);
    }
    append({record(1)});
    EXPECT_EQ(current(), smallLine + "torn\n" + smallLine + smallLine);
    EXPECT_TRUE(others().isEmpty());
    EXPECT_EQ(log.lines(), (QStringList {failure, failure, failure}));
    std::signal(SIGXFSZ, fileSizeSignal);
}

TEST_F(AuditStore, whereNothingCanBeWrittenOneLineSaysWhyAndTheStoreGoesOn)
{
    const auto oneFailure = [this](const QString &why) {
        RecordingLog failures;
        AuditLogStore(folder, {}, failures).append(record(1));
        const QStringList lines = failures.lines();
        EXPECT_TRUE(lines.size() == 1
                    && lines.first().startsWith("[Brackwen][Audit] append failed: "_L1)
                    && lines.first().contains(folder) && lines.first().endsWith(why))
            << qPrintable(lines.join(u'\n'));
    };
    writeFile(currentName, smallLine);
    QFile::remove(path(currentName));
    QDir(folder).mkdir(currentName);
    oneFailure(u"Is a directory"_s);
    QDir(folder).rmdir(currentName);

    // Nobody reads this pipe, and nobody may wait for a reader.
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(currentName)).constData(), 0600), 0);
    oneFailure(u"not a regular file"_s);
    {
        AuditLogStore store(folder, {}, log);
        EXPECT_TRUE(store.records(0).isEmpty());
        EXPECT_TRUE(store.diagnosticLogFileURLs().isEmpty());
    }
    QFile::remove(path(currentName));
    {
        const WithoutRoot user(temporary.path());
        QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
        oneFailure(u"Permission denied"_s);
        QFile::setPermissions(
            folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }
    QDir(folder).removeRecursively();
    QFile blocker(folder);
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    oneFailure(u"File exists"_s);
    blocker.remove();

    append({record(1)});
    EXPECT_EQ(current(), smallLine);
    EXPECT_EQ(log.lines(), QStringList());
}

TEST_F(AuditStore, aGapIsKnownWhileItLastsAndIsOnRecordAfterwards)
{
    AuditLogStore store(folder, {}, log);
    store.append(record(1));
    store.flush();
    const AuditLogCondition &condition = store.health().condition();
    {
        const FullDisk full;
        store.append(record(2));
        store.flush();
        store.append(record(3));
        ASSERT_TRUE(waitUntil([&] { return !condition.isWritable; }));
        EXPECT_TRUE(condition.problem.endsWith(u"File too large"_s));
        store.flush();
    }
    // By itself, without another event.
    ASSERT_TRUE(waitUntil([&] { return condition.isWritable; }));
    EXPECT_EQ(condition.lostEvents, 2u);
    store.append(record(4));
    const auto records = store.records(0);
    ASSERT_EQ(records.size(), 3);
    EXPECT_EQ(records[1].kind, AuditKind::auditGap);
    EXPECT_TRUE(records[1].note->startsWith(u"lostEvents=2 sinceMs="_s));
    EXPECT_TRUE(records[1].note->endsWith(u"File too large"_s));
}

TEST_F(AuditStore, appendNeverWaitsAndMemoryIsBoundedWhileTheDiskIsStuck)
{
    StuckLog stuck;
    QDir().mkpath(folder);
    QDir(folder).mkdir(currentName);
    {
        AuditLogStore store(folder, {.maxPendingBytes = 2 * static_cast<quint64>(smallLine.size())},
                            stuck);
        store.append(record(1));
        stuck.reached.wait();
        QDir(folder).rmdir(currentName);
        for (int i = 0; i < 5; ++i) {
            store.append(record(1));
        }
        stuck.letGo.count_down();
        store.flush();
        store.append(record(1));
    }
    QByteArrayList lines = current().split('\n');
    EXPECT_TRUE(lines.takeFirst().contains("\"note\":\"lostEvents=4 sinceMs="));
    EXPECT_EQ(lines.join('\n'), smallLine + smallLine + smallLine);
    const QString prefix = u"[Brackwen][Audit] append failed: "_s;
    const QStringList logged = stuck.record.lines();
    ASSERT_EQ(logged.size(), 3);
    EXPECT_TRUE(
        logged.contains(prefix + u"the disk does not answer and no more events can wait"_s));
    EXPECT_EQ(logged.last(), prefix + u"3 events lost while the disk did not answer"_s);
}

} // namespace bram::test
