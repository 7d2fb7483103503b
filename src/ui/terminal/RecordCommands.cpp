// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/RecordCommands.h"

#include "monitor/RecordOperations.h"
#include "system/BackgroundTasks.h"
#include "ui/language/LanguageChoice.h"
#include "ui/terminal/TerminalPrompts.h"
#include "ui/terminal/TerminalTr.h"
#include "ui/terminal/TerminalVoice.h"
#include "ui/terminal/TypedPath.h"

#include <QFileInfo>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int percentBetweenWords = 25;
} // namespace

RecordCommands::RecordCommands(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
    connect(&collaborators.record, &RecordOperations::workStarted, this,
            [this] { m_percentSaid = 0; });
    connect(&collaborators.record, &RecordOperations::workProgressed, this,
            &RecordCommands::onProgress);
}

void RecordCommands::carryOut(const FileCommand &command)
{
    const bool isFolder = command.purpose == FileCommand::Purpose::Diagnostics;
    const auto path = usableTypedPath(
        command.path, isFolder ? FileQuestion::Kind::Folder : FileQuestion::Kind::SaveFile);
    if (!path) {
        m_collaborators.voice.say(path.error().message, LineStyle::Warning);
        return;
    }
    m_collaborators.tasks.spawn(write(this, command.purpose, *path), u"export"_s);
}

void RecordCommands::cancel()
{
    const bool isWorking = m_collaborators.record.isWorking();
    m_collaborators.record.cancel();
    m_collaborators.voice.say(isWorking ? TerminalTr::tr("Cancelled; nothing is written.")
                                        : TerminalTr::tr("No report and no bundle is being made."));
}

QCoro::Task<> RecordCommands::write(QPointer<RecordCommands> self, FileCommand::Purpose purpose,
                                    QString path)
{
    if (purpose != FileCommand::Purpose::Diagnostics && QFileInfo::exists(path)) {
        const bool agreed = co_await self->m_collaborators.prompts.agreeToReplace(path);
        if (!self || !agreed) {
            co_return;
        }
    }
    RecordOperations &record = self->m_collaborators.record;
    TerminalPrompts &prompts = self->m_collaborators.prompts;
    const MenuLanguage language = self->m_collaborators.language.current();
    if (purpose == FileCommand::Purpose::WeeklyReport) {
        co_await record.exportWeeklyAuditReportTo(prompts, path, language);
        co_return;
    }
    if (purpose == FileCommand::Purpose::Diagnostics) {
        SurfaceFacts surface;
        surface.surface = u"terminal"_s;
        co_await record.exportDiagnosticsBundleTo(prompts, surface, path, language);
        co_return;
    }
    const bool isWritten = co_await record.savePendingApprovalDetailsTo(prompts, path);
    if (self && isWritten) {
        self->m_collaborators.voice.say(TerminalTr::tr("The pending requests are in: ") + path);
    }
}

void RecordCommands::onProgress(int percent)
{
    if (percent >= m_percentSaid + percentBetweenWords && percent < 100) {
        m_percentSaid = percent;
        m_collaborators.voice.say(TerminalTr::tr("Going through the audit log: %1 %").arg(percent),
                                  LineStyle::Quiet);
    }
}

} // namespace bram
