// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditFixture.h"
#include "audit/AuditRecordCodec.h"
#include "support/Waiting.h"

#include <QRegularExpression>

namespace bram::test
{

using namespace Qt::StringLiterals;

namespace
{
class AuditRotation : public AuditTest
{
protected:
    static std::string line(const AuditEventRecord &record)
    {
        std::string bytes;
        appendAuditLine(record, bytes);
        return bytes;
    }
};
} // namespace

TEST_F(AuditRotation, aLineThatWouldPassTheLimitStartsANewFile)
{
    const std::string one = line(record(1));
    const AuditLogLimits exact {.maxBytes = 3 * one.size()};
    append({record(1)}, exact);
    append({record(2)}, exact);
    append({record(3)}, exact);
    EXPECT_TRUE(others().isEmpty());
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    append({record(4)}, exact);
    EXPECT_EQ(current().toStdString(), line(record(4)));
    ASSERT_EQ(others().size(), 1);
    EXPECT_EQ(content(others().first()).toStdString(),
              line(record(1)) + line(record(2)) + line(record(3)));
    const auto match
        = QRegularExpression(u"^audit-events-(\\d+)\\.jsonl$"_s).match(others().first());
    ASSERT_TRUE(match.hasMatch());
    EXPECT_GE(match.captured(1).toLongLong(), before);
    EXPECT_LE(match.captured(1).toLongLong(), QDateTime::currentMSecsSinceEpoch());
    EXPECT_EQ(log.lines(), QStringList());
}

TEST_F(AuditRotation, linesWrittenTogetherAreRotatedAsIfEachCameAlone)
{
    constexpr qint64 count = 1000;
    const quint64 maxBytes = 10 * line(record(1000)).size() + 3;
    QList<AuditEventRecord> records;
    for (qint64 i = 0; i < count; ++i) {
        // Now and then a line that is larger than a whole file may be.
        records.append(record(1000 + i, i % 100 == 50 ? QString(2000, u'x') : QString()));
    }
    append(records, {.maxBytes = maxBytes, .maxArchives = 500});

    std::string joined;
    QStringList files = others();
    files.append(currentName);
    qsizetype smallFiles = 0;
    for (const QString &name : files) {
        const std::string bytes = content(name).toStdString();
        const bool oversized = bytes.size() > maxBytes;
        EXPECT_TRUE(!oversized || std::ranges::count(bytes, '\n') == 1) << qPrintable(name);
        smallFiles += !oversized && std::ranges::count(bytes, '\n') < 10 ? 1 : 0;
        joined += bytes;
    }
    std::string expected;
    for (const auto &one : records) {
        expected += line(one);
    }
    EXPECT_EQ(joined, expected);
    // A file is left before it is full only for the large line, and at the end.
    EXPECT_LE(smallFiles, 11);
    EXPECT_EQ(log.lines(), QStringList());
}

TEST_F(AuditRotation, aRunningStoreSeesArchivesThatAppearLater)
{
    AuditLogStore store(folder, {}, log);
    store.append(record(1));
    store.flush();
    for (int i = 0; i < 25; ++i) {
        writeFile(u"audit-events-%1.jsonl"_s.arg(1000 + i), "{}\n", dayMs - i * 1000);
    }
    store.append(record(2));
    store.flush();
    EXPECT_EQ(others().size(), 24);
    EXPECT_FALSE(others().contains(u"audit-events-1000.jsonl"_s));
}

TEST_F(AuditRotation, aFileNotWrittenForLongerThanTheRetentionIsArchivedAndThenPruned)
{
    writeFile(currentName, "{\"timestampMs\":1,\"kind\":\"young\"}\n", 30 * dayMs - 60'000);
    append({record(2)});
    EXPECT_EQ(current().count('\n'), 2);
    writeFile(currentName, "{\"timestampMs\":1,\"kind\":\"old\"}\n", 30 * dayMs + 60'000);
    append({record(3)});
    EXPECT_EQ(current().toStdString(), line(record(3)));
    // Its age is past the archives' limit as well.
    EXPECT_TRUE(others().isEmpty());
}

TEST_F(AuditRotation, pruningKeepsTheYoungestArchivesAndWhatIsNoArchive)
{
    const QStringList kept {u"audit-events-1.jsonl.bak"_s, u"my-audit-events-1.jsonl"_s,
                            u"audit-events.jsonl.old"_s, u"notes.txt"_s, u"audit-events-1.json"_s};
    for (const QString &name : kept) {
        writeFile(name, "{\"timestampMs\":9,\"kind\":\"k\"}\n", 90 * dayMs);
    }
    QDir(folder).mkdir(u"audit-events-folder.jsonl"_s);
    QStringList archives;
    for (int age = 1; age <= 25; ++age) {
        // The names run against the ages: the date counts.
        archives.append(u"audit-events-%1.jsonl"_s.arg(100 + age));
        writeFile(archives.last(), "{\"timestampMs\":7,\"kind\":\"k\"}\n", age * dayMs);
    }
    writeFile(u"audit-events-.jsonl"_s, "", 30 * dayMs + 60'000);
    writeFile(u"audit-events-999.jsonl"_s, "", 31 * dayMs);

    AuditLogStore store(folder, {}, log);
    store.append(record(1));
    const auto records = store.records(0);
    EXPECT_EQ(records.size(), 26);
    // One archive was not old enough, but too many.
    EXPECT_EQ(records.at(1).kind, AuditKind::auditArchivesDeletedEarly);
    EXPECT_EQ(records.at(1).note, u"deletedArchives=1 maxArchives=24"_s);
    EXPECT_TRUE(waitUntil([&] { return store.health().condition().archivesDeletedEarly == 1; }));
    EXPECT_EQ(store.diagnosticLogFileURLs().size(), 25);
    EXPECT_EQ(store.diagnosticLogFileURLs().first(), QUrl::fromLocalFile(path(currentName)));
    archives.removeLast();
    EXPECT_EQ(store.diagnosticLogFileURLs().last(), QUrl::fromLocalFile(path(archives.first())));
    QStringList expected = kept + archives;
    expected.sort();
    QStringList found = others();
    found.sort();
    EXPECT_EQ(found, expected);
    EXPECT_TRUE(QDir(path(u"audit-events-folder.jsonl"_s)).exists());
    EXPECT_EQ(log.lines(), QStringList());
}

TEST_F(AuditRotation, stepsThatAreNotPermittedAreLoggedAndTheLineIsWritten)
{
    writeFile(currentName, "{\"timestampMs\":1,\"kind\":\"k\"}\n");
    writeFile(u"audit-events-1.jsonl"_s, "", 31 * dayMs);
    writeFile(u"audit-events-2.jsonl"_s, "{\"timestampMs\":2,\"kind\":\"k\"}\n", dayMs);
    QFile::setPermissions(path(u"audit-events-2.jsonl"_s), QFileDevice::WriteOwner);
    const WithoutRoot user(temporary.path());
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    const QString where = u"[Brackwen][Audit] %1 failed: "_s + folder + u"/%2: Permission denied"_s;
    {
        AuditLogStore store(folder, {.maxBytes = 1, .maxArchives = 0}, log);
        store.append(record(3));
        EXPECT_EQ(times(store.records(0)), (QList<qint64> {1, 3}));
    }
    const QStringList expected {
        where.arg(u"rotate"_s, currentName),
        where.arg(u"prune"_s, u"audit-events-1.jsonl"_s),
        where.arg(u"archive cap prune"_s, u"audit-events-1.jsonl"_s),
        where.arg(u"archive cap prune"_s, u"audit-events-2.jsonl"_s),
        where.arg(u"read"_s, u"audit-events-2.jsonl"_s),
    };
    EXPECT_EQ(log.lines(), expected);
    QFile::setPermissions(folder,
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

} // namespace bram::test
