// SPDX-License-Identifier: Apache-2.0
#include "monitor/CommandLineTool.h"

#include "monitor/DecisionResolver.h"
#include "system/ChildEnvironment.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QStringDecoder>
#include <QTimer>

#include <algorithm>
#include <memory>

#include <linux/close_range.h>
#include <unistd.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
using Result = CommandLineTool::Result;

constexpr qsizetype maxOutputBytes = 4 * 1024;

QString jsonString(const QString &text)
{
    const QByteArray array = QJsonDocument(QJsonArray {text}).toJson(QJsonDocument::Compact);
    // Readers take one at the beginning of a text for a mark of the encoding.
    return QString::fromUtf8(array.sliced(1, array.size() - 2))
        .replace(QChar(QChar::ByteOrderMark), u"\\ufeff"_s);
}

Result failure(const QString &message)
{
    return std::unexpected(GatewayClientError::server(message));
}

/// What the tool says: its beginning, which holds the reason as a rule, and, from wherever it stands in the rest,
/// that the request is unknown.
class Output
{
public:
    void take(const QByteArray &more)
    {
        m_beginning.append(more.first(std::min(more.size(), maxOutputBytes - m_beginning.size())));
        if (m_unknown.isEmpty()) {
            const QByteArray looked = m_seam + more;
            m_unknown = unknownApprovalPhrase(QString::fromUtf8(looked));
            m_seam = looked.last(std::min(looked.size(), seamBytes));
        }
    }

    QString failureText(int exitCode) const
    {
        QStringDecoder decoder(QStringDecoder::Utf8);
        const QString text = QString(decoder(m_beginning)).trimmed();
        if (!m_unknown.isEmpty() && unknownApprovalPhrase(text).isEmpty()) {
            return text + u" … "_s + m_unknown;
        }
        if (decoder.hasError()) {
            return u"unknown error"_s;
        }
        return text.isEmpty() ? u"it ended with status "_s + QString::number(exitCode) : text;
    }

private:
    static constexpr qsizetype seamBytes = 64; ///< longer than each phrase

    QByteArray m_beginning;
    QByteArray m_seam; ///< a phrase may come in two parts
    QString m_unknown;
};

Result toResult(int exitCode, QProcess::ExitStatus status, const Output &output)
{
    if (status == QProcess::CrashExit) {
        return failure(u"it crashed"_s);
    }
    return exitCode == 0 ? Result() : failure(output.failureText(exitCode));
}

/// Leaves the child only its standard streams, also of files that a library opened carelessly.
void keepStandardStreamsOnly()
{
    close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
}
} // namespace

QString commandLineParams(const QString &approvalId, ApprovalDecision decision)
{
    return "{\"id\":"_L1 + jsonString(approvalId) + ",\"decision\":"_L1
        + jsonString(rawText(decision)) + u'}';
}

CommandLineTool::CommandLineTool(std::chrono::milliseconds timeLimit)
    : m_timeLimit(timeLimit)
{
}

CommandLineTool::~CommandLineTool()
{
    // Those still running go as children, and would report their end to what is no longer there.
    for (QProcess *tool : findChildren<QProcess *>()) {
        tool->disconnect();
    }
}

Reply<CommandLineTool::Result> CommandLineTool::resolve(const QString &approvalId,
                                                        ApprovalDecision decision)
{
    const ReplySource<Result> source(failure(u"it was abandoned"_s));
    m_waiting.enqueue({approvalId, decision, source});
    startWaiting();
    return source.reply();
}

void CommandLineTool::stop()
{
    m_waiting.clear(); // their sources answer by going
    Q_EMIT stopping();
}

void CommandLineTool::startWaiting()
{
    while (m_runningCount < mostAtOnce && !m_waiting.isEmpty()) {
        start(m_waiting.dequeue());
    }
}

void CommandLineTool::start(const Call &call)
{
    ++m_runningCount;
    const ReplySource<Result> source = call.source;
    const auto output = std::make_shared<Output>();
    // Goes when it has ended, never before: destroying a running one would wait for it.
    auto *const tool = new QProcess(this);
    const auto endWith = [source, tool](const QString &message) {
        source.answer(failure(message));
        tool->kill();
    };

    tool->setProcessChannelMode(QProcess::MergedChannels);
    tool->setProcessEnvironment(
        childEnvironment({u"BRACKWEN_GATEWAY_TOKEN"_s, u"BRACKWEN_GATEWAY_PASSWORD"_s}));
    tool->setStandardInputFile(QProcess::nullDevice());
    tool->setChildProcessModifier(keepStandardStreamsOnly);
    connect(tool, &QProcess::readyRead, tool, [tool, output] { output->take(tool->readAll()); });
    connect(tool, &QProcess::finished, tool,
            [this, source, tool, output](int exitCode, QProcess::ExitStatus status) {
                output->take(tool->readAll());
                source.answer(toResult(exitCode, status, *output));
                onEnded(tool);
            });
    connect(tool, &QProcess::errorOccurred, tool,
            [this, source, tool](QProcess::ProcessError error) {
                if (error == QProcess::FailedToStart) {
                    source.answer(failure(tool->errorString()));
                    onEnded(tool);
                }
            });
    connect(this, &CommandLineTool::stopping, tool,
            [endWith] { endWith(u"it was ended together with this program"_s); });
    QTimer::singleShot(m_timeLimit, tool, [endWith, limit = m_timeLimit] {
        endWith(u"it did not end within %1 s"_s.arg(static_cast<double>(limit.count()) / 1000));
    });
    tool->start(u"/usr/bin/env"_s,
                {u"brackwen"_s, u"gateway"_s, u"call"_s, u"exec.approval.resolve"_s, u"--json"_s,
                 u"--params"_s, commandLineParams(call.approvalId, call.decision)});
}

void CommandLineTool::onEnded(QProcess *tool)
{
    tool->deleteLater();
    --m_runningCount;
    // In a later turn: a tool that cannot be started ends inside its start.
    QMetaObject::invokeMethod(this, &CommandLineTool::startWaiting, Qt::QueuedConnection);
}

} // namespace bram
