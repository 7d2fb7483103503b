// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/RecordActions.h"

#include "monitor/OperatorPrompts.h"
#include "monitor/RecordOperations.h"
#include "system/BackgroundTasks.h"
#include "ui/language/LanguageChoice.h"

#include <QClipboard>
#include <QGuiApplication>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// What an operation gives is told by its own dialogs.
QCoro::Task<> finished(QCoro::Task<bool> operation)
{
    co_await operation;
}

void copyToClipboard(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}
} // namespace

RecordActions::RecordActions(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
    const RecordOperations *record = &collaborators.record;
    connect(record, &RecordOperations::workStarted, this, [this] {
        m_percentDone = 0;
        Q_EMIT workChanged();
    });
    connect(record, &RecordOperations::workProgressed, this, [this](int percent) {
        m_percentDone = percent;
        Q_EMIT workChanged();
    });
    connect(record, &RecordOperations::workEnded, this, &RecordActions::workChanged);
}

template<typename Begin>
void RecordActions::carryOut(Wish wish, const QString &name, Begin begin)
{
    if (m_underWay.contains(wish)) {
        m_collaborators.prompts.recall();
        return;
    }
    m_underWay.insert(wish);
    m_collaborators.tasks.spawn(ending(this, wish, begin()), name);
}

QCoro::Task<> RecordActions::ending(Self self, Wish wish, QCoro::Task<bool> operation)
{
    co_await operation;
    if (self) {
        self->m_underWay.remove(wish);
    }
}

void RecordActions::exportWeeklyAuditReport()
{
    carryOut(Wish::Report, u"weekly report"_s, [this] {
        return m_collaborators.record.exportWeeklyAuditReport(m_collaborators.prompts,
                                                              m_collaborators.language.current());
    });
}

void RecordActions::previewWeeklyAuditReport()
{
    m_collaborators.tasks.spawn(finished(m_collaborators.record.previewWeeklyAuditReport(
                                    m_collaborators.prompts, m_collaborators.language.current())),
                                u"weekly report"_s);
}

void RecordActions::exportDiagnosticsBundle()
{
    carryOut(Wish::Bundle, u"diagnostics bundle"_s, [this] {
        return m_collaborators.record.exportDiagnosticsBundle(
            m_collaborators.prompts, m_collaborators.surface(), m_collaborators.language.current());
    });
}

void RecordActions::copyOrSaveAllPending()
{
    carryOut(Wish::Pending, u"export"_s, [this] {
        return m_collaborators.record.copyOrSaveAllPendingApprovalDetails(m_collaborators.prompts,
                                                                          copyToClipboard);
    });
}

void RecordActions::cancel()
{
    m_collaborators.record.cancel();
}

bool RecordActions::isWorking() const
{
    return m_collaborators.record.isWorking();
}

} // namespace bram
