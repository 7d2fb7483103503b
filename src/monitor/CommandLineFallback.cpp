// SPDX-License-Identifier: Apache-2.0
#include "monitor/CommandLineFallback.h"

#include "system/Reply.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QStringDecoder>
#include <QTimer>

#include <chrono>
#include <memory>

#include <linux/close_range.h>
#include <unistd.h>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
using Result = std::expected<void, GatewayClientError>;

constexpr auto timeLimit = 60s;
constexpr qsizetype maxOutputBytes = 64 * 1024;

QString jsonString(const QString &text)
{
    const QByteArray array = QJsonDocument(QJsonArray {text}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(array.sliced(1, array.size() - 2));
}

Result failure(const QString &message)
{
    return std::unexpected(GatewayClientError::server(message));
}

QString outputText(const QByteArray &output)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(output);
    return decoder.hasError() ? u"unknown error"_s : text.trimmed();
}

Result toResult(int exitCode, QProcess::ExitStatus status, const QByteArray &output)
{
    if (status == QProcess::CrashExit) {
        return failure(u"it crashed"_s);
    }
    if (exitCode != 0) {
        return failure(outputText(output));
    }
    return {};
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

QCoro::Task<std::expected<void, GatewayClientError>> resolveViaCommandLine(QString approvalId,
                                                                           ApprovalDecision decision)
{
    const auto process = std::make_unique<QProcess>();
    auto *const tool = process.get();
    const ReplySource<Result> source(failure(u"it was abandoned"_s));
    const auto output = std::make_shared<QByteArray>();

    tool->setProcessChannelMode(QProcess::MergedChannels);
    tool->setStandardInputFile(QProcess::nullDevice());
    tool->setChildProcessModifier(keepStandardStreamsOnly);
    const auto drain = [tool, output] {
        const QByteArray more = tool->readAll();
        output->append(more.first(std::min(more.size(), maxOutputBytes - output->size())));
    };
    QObject::connect(tool, &QProcess::readyRead, tool, drain);
    QObject::connect(tool, &QProcess::finished, tool,
                     [source, output, drain](int exitCode, QProcess::ExitStatus status) {
                         drain();
                         source.answer(toResult(exitCode, status, *output));
                     });
    QObject::connect(tool, &QProcess::errorOccurred, tool,
                     [source, tool](QProcess::ProcessError error) {
                         if (error == QProcess::FailedToStart) {
                             source.answer(failure(tool->errorString()));
                         }
                     });
    QTimer::singleShot(timeLimit, tool, [source, tool] {
        source.answer(failure(u"it did not end within 60 s"_s));
        tool->kill();
    });
    tool->start(u"/usr/bin/env"_s,
                {u"brackwen"_s, u"gateway"_s, u"call"_s, u"exec.approval.resolve"_s, u"--json"_s,
                 u"--params"_s, commandLineParams(approvalId, decision)});
    co_return co_await source.reply();
}

} // namespace bram
