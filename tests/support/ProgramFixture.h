// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditRecordCodec.h"
#include "support/ProgramUnderTest.h"

#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace bram::test
{

/// A home and a lock of its own, so that nothing of the machine's user takes part.
class ProgramFixture : public testing::Test
{
protected:
    void SetUp() override
    {
        environment = QProcessEnvironment();
        environment.insert(QStringLiteral("PATH"), QStringLiteral("/usr/bin:/bin"));
        environment.insert(QStringLiteral("HOME"), home.path());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"),
                           home.filePath(QStringLiteral("config")));
        environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
        environment.insert(QStringLiteral("BRACKWEN_APPROVALS_LOCK_FILE"),
                           home.filePath(QStringLiteral("lock")));
        environment.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                           QStringLiteral("unix:path=/nonexistent"));
        for (const char *kept : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
            if (qEnvironmentVariableIsSet(kept)) {
                environment.insert(QString::fromUtf8(kept), qEnvironmentVariable(kept));
            }
        }
    }

    /// A gateway that plays `script`; on the port of the one before it, if there was one.
    std::unique_ptr<ProgramUnderTest> startGateway(const QString &script,
                                                   const QStringList &options = {})
    {
        const QString path = home.filePath(QStringLiteral("script%1").arg(++scripts));
        QFile file(path);
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(script.toUtf8());
        file.close();
        auto gateway = std::make_unique<ProgramUnderTest>(
            QStringLiteral(BRAM_PRACTICE_GATEWAY),
            QStringList {QStringLiteral("--port"), QString::number(port),
                         QStringLiteral("--script"), path}
                + options);
        EXPECT_TRUE(gateway->says(QStringLiteral("listening on ")));
        EXPECT_TRUE(gateway->says(QStringLiteral("\n")));
        const QUrl url(gateway->output().section(u'\n', 0, 0).section(u' ', -1));
        port = url.port();
        environment.insert(QStringLiteral("BRACKWEN_GATEWAY_URL"), url.toString());
        return gateway;
    }
    std::unique_ptr<ProgramUnderTest> startBram(const QStringList &arguments = {})
    {
        return std::make_unique<ProgramUnderTest>(QStringLiteral(BRAM_PROGRAM), arguments,
                                                  environment);
    }

    QString auditFile() const
    {
        return home.filePath(QStringLiteral("data/BrackwenApprovalsMenu/audit-events.jsonl"));
    }
    /// "kind id decision" of every record, in order; gateway events without id and decision.
    std::vector<std::string> auditLines() const
    {
        QFile file(auditFile());
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        std::vector<std::string> lines;
        AuditRecordDecoder decoder;
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (const auto record = decoder.decode(
                    std::string_view(line.constData(), static_cast<size_t>(line.size())))) {
                lines.push_back((record->kind + u' ' + record->approvalId.value_or(QString()) + u' '
                                 + record->decision.value_or(QString()))
                                    .trimmed()
                                    .toStdString());
            }
        }
        return lines;
    }

    QTemporaryDir home;
    QProcessEnvironment environment;
    int port = 0;
    int scripts = 0;
};

} // namespace bram::test
