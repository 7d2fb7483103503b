// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditLogStore.h"
#include "support/Doubles.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bram::test
{

inline constexpr qint64 dayMs = 86'400'000;

/// A folder for an audit log, which does not exist at first, and the log lines of a store in it.
class AuditTest : public testing::Test
{
protected:
    QString path(const QString &name) const { return folder + u'/' + name; }

    QByteArray content(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QByteArray current() const { return content(currentName); }

    /// The names of all files of the folder but the current one.
    QStringList others() const
    {
        QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
        names.removeAll(currentName);
        return names;
    }

    void writeFile(const QString &name, const QByteArray &bytes, qint64 ageMs = 0)
    {
        QDir().mkpath(folder);
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.flush();
        const auto time = QDateTime::currentDateTimeUtc().addMSecs(-ageMs);
        ASSERT_TRUE(file.setFileTime(time, QFileDevice::FileModificationTime));
    }

    mode_t mode(const QString &file) const
    {
        struct stat status = {};
        return ::stat(QFile::encodeName(file).constData(), &status) == 0 ? status.st_mode & 07777
                                                                         : 0;
    }

    /// Appends, and waits for the writing, in a store of its own.
    void append(const QList<AuditEventRecord> &records, const AuditLogLimits &limits = {})
    {
        AuditLogStore store(folder, limits, log);
        for (const AuditEventRecord &record : records) {
            store.append(record);
        }
    }

    static AuditEventRecord record(qint64 timestampMs, const QString &note = {})
    {
        AuditEventRecord record;
        record.timestampMs = timestampMs;
        record.kind = AuditKind::approvalResolved;
        if (!note.isEmpty()) {
            record.note = note;
        }
        return record;
    }

    static QList<qint64> times(const QList<AuditEventRecord> &records)
    {
        QList<qint64> times;
        for (const AuditEventRecord &one : records) {
            times.append(one.timestampMs);
        }
        return times;
    }

    QTemporaryDir temporary;
    QString folder = temporary.filePath(QStringLiteral("data/BrackwenApprovalsMenu"));
    const QString currentName = QStringLiteral("audit-events.jsonl");
    RecordingLog log;
};

/// Takes the superuser's rights from this process while it lives, so that file modes count.
class WithoutRoot
{
public:
    explicit WithoutRoot(const QString &ownedFolder)
    {
        if (m_wasRoot) {
            constexpr uid_t nobody = 65'534;
            own(ownedFolder, nobody);
            EXPECT_EQ(::seteuid(nobody), 0);
        }
    }
    ~WithoutRoot()
    {
        if (m_wasRoot) {
            EXPECT_EQ(::seteuid(0), 0);
        }
    }
    Q_DISABLE_COPY_MOVE(WithoutRoot)

private:
    static void own(const QString &path, uid_t user)
    {
        EXPECT_EQ(::chown(QFile::encodeName(path).constData(), user, static_cast<gid_t>(-1)), 0);
        for (const QFileInfo &entry :
             QDir(path).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
            own(entry.filePath(), user);
        }
    }

    const bool m_wasRoot = ::geteuid() == 0;
};

} // namespace bram::test
