// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Waiting.h"

#include <QProcess>
#include <QString>
#include <QStringList>

#include <csignal>

namespace bram::test
{

/// A program started as a user starts it, with pipes for its standard streams.
class ProgramUnderTest
{
public:
    ProgramUnderTest(const QString &program, const QStringList &arguments,
                     const QProcessEnvironment &environment
                     = QProcessEnvironment::systemEnvironment())
    {
        m_process.setProcessEnvironment(environment);
        // Whatever started the tests may ignore some, which is inherited.
        m_process.setChildProcessModifier([] {
            for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
                std::signal(number, SIG_DFL);
            }
        });
        m_process.start(program, arguments);
    }
    ~ProgramUnderTest() { kill(); }
    Q_DISABLE_COPY_MOVE(ProgramUnderTest)

    /// Waits until standard output holds `text` beyond what an earlier call has found.
    [[nodiscard]] bool says(const QString &text) { return waitFor(text, m_output, m_outputSeen); }
    /// The same for standard error.
    [[nodiscard]] bool complains(const QString &text)
    {
        return waitFor(text, m_errors, m_errorsSeen);
    }

    void send(const QString &line) { m_process.write(line.toUtf8() + '\n'); }
    qint64 processId() const { return m_process.processId(); }
    void closeInput() { m_process.closeWriteChannel(); }
    void signal(int number) { ::kill(static_cast<pid_t>(m_process.processId()), number); }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    /// The exit status; -1 when it was killed or did not end in time.
    int ends()
    {
        const bool ended = waitUntil([&] { return m_process.state() == QProcess::NotRunning; });
        collect();
        return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }

    /// Everything so far.
    QString output()
    {
        collect();
        return m_output;
    }
    QString errors()
    {
        collect();
        return m_errors;
    }

private:
    void collect()
    {
        m_output += QString::fromUtf8(m_process.readAllStandardOutput());
        m_errors += QString::fromUtf8(m_process.readAllStandardError());
    }
    bool waitFor(const QString &text, const QString &stream, qsizetype &seen)
    {
        return waitUntil([&] {
            collect();
            const qsizetype at = stream.indexOf(text, seen);
            if (at >= 0) {
                seen = at + text.size();
            }
            return at >= 0;
        });
    }

    QProcess m_process;
    QString m_output;
    QString m_errors;
    qsizetype m_outputSeen = 0;
    qsizetype m_errorsSeen = 0;
};

} // namespace bram::test
