// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Doubles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace bram::test
{

/// A home with the platform's folder in it.
class AllowlistFixture : public testing::Test
{
protected:
    AllowlistFixture() { EXPECT_TRUE(QDir(home.path()).mkpath(QStringLiteral(".brackwen"))); }

    QString platform(const QString &name = {}) const
    {
        const QString folder = home.filePath(QStringLiteral(".brackwen"));
        return name.isEmpty() ? folder : folder + u'/' + name;
    }
    static void write(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QFile::WriteOnly)) << qPrintable(path);
        file.write(content);
    }
    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }
    static mode_t modeOf(const QString &path)
    {
        struct stat status = {};
        return ::lstat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777
                                                                          : 0;
    }

    QTemporaryDir home;
    RecordingLog log;
};

} // namespace bram::test
